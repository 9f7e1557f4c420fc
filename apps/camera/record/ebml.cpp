#include "apps/camera/record/ebml.h"

#include <cstring>

namespace ostrel::apps::cli::ebml {

namespace {

const Id SPACE = 0xEC;
const uint64_t UNKNOWN = (uint64_t(1) << 56) - 1;

// The last count bytes, the most significant first.
std::string bigEndian(uint64_t value, std::size_t count) {
    std::string bytes(count, '\0');
    for (std::size_t at = count; at-- > 0; value >>= 8)
        bytes[at] = static_cast<char>(value & 0xFF);
    return bytes;
}

std::size_t bytesNeeded(uint64_t value) {
    std::size_t count = 1;
    while (count < 8 && value >> (8 * count) != 0)
        ++count;
    return count;
}

std::string element(Id id, const std::string& content) {
    return bytesOf(id) + size(content.size()) + content;
}

} // namespace

std::string bytesOf(Id id) {
    return bigEndian(id, bytesNeeded(id));
}

// A first bit that is set in the first byte says that eight bytes follow in all.
std::string size(uint64_t bytes) {
    return bigEndian((uint64_t(1) << 56) | bytes, SIZE_BYTES);
}

std::string number(Id id, uint64_t value) {
    return element(id, bigEndian(value, bytesNeeded(value)));
}

std::string real(Id id, double value) {
    uint64_t bits = 0;
    static_assert(sizeof bits == sizeof value, "IEEE 754");
    std::memcpy(&bits, &value, sizeof bits);
    return element(id, bigEndian(bits, sizeof bits));
}

std::string date(Id id, int64_t nanosecondsSince2001) {
    return element(id, bigEndian(static_cast<uint64_t>(nanosecondsSince2001), 8));
}

std::string text(Id id, const std::string& utf8) {
    return element(id, utf8);
}

std::string master(Id id, const std::string& content) {
    return element(id, content);
}

std::string space(std::size_t bytes) {
    return element(SPACE, std::string(bytes - 1 - SIZE_BYTES, '\0'));
}

std::string openMaster(Id id) {
    return bytesOf(id) + size(UNKNOWN);
}

} // namespace ostrel::apps::cli::ebml
