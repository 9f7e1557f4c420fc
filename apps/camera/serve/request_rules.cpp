#include "apps/camera/serve/request_rules.h"

#include "apps/common/text.h"

namespace ostrel::apps::cli {

bool isOwnHost(const std::string& host, uint16_t port) {
    const std::string asked = toLower(host);
    for (const std::string name : {"localhost", "127.0.0.1", "[::1]"})
        if (asked == name + ":" + std::to_string(port) || (port == 80 && asked == name))
            return true;
    return false;
}

bool isOwnSite(const std::string& site) {
    return toLower(site) != "cross-site";
}

} // namespace ostrel::apps::cli
