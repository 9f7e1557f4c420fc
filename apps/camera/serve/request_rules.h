// Which requests are answered: those of pages of this server, by people at this machine.
#ifndef OSTREL_APPS_CAMERA_SERVE_REQUEST_RULES_H
#define OSTREL_APPS_CAMERA_SERVE_REQUEST_RULES_H

#include <cstdint>
#include <string>

namespace ostrel::apps::cli {

// Whether the Host of a request is this machine by one of its own names. A page elsewhere on the web can have
// its own name lead here, so that a browser takes this server for a part of it; but it cannot change the
// name.
bool isOwnHost(const std::string& host, uint16_t port);

// Whether a Sec-Fetch-Site lets a request pass: it must not come from a page of another site. Empty: the
// client does not say, as programs other than browsers.
bool isOwnSite(const std::string& site);

} // namespace ostrel::apps::cli

#endif
