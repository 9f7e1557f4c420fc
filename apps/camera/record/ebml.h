// The elements of EBML (RFC 8794), of which Matroska files consist, as bytes.
#ifndef OSTREL_APPS_CAMERA_RECORD_EBML_H
#define OSTREL_APPS_CAMERA_RECORD_EBML_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace ostrel::apps::cli::ebml {

// Identifiers are written as they are published, with the bits that tell their length.
using Id = uint32_t;

std::string number(Id id, uint64_t value);
std::string real(Id id, double value);
std::string text(Id id, const std::string& utf8);
std::string date(Id id, int64_t nanosecondsSince2001);
std::string bytesOf(Id id);
// content: other elements.
std::string master(Id id, const std::string& content);
// An element without a meaning that takes so many bytes in all, from 9 on; another may take its place later.
std::string space(std::size_t bytes);

// The beginning of an element that grows while it is written. Its size stands in the last SIZE_BYTES bytes,
// is unknown at first and may be filled in later.
const std::size_t SIZE_BYTES = 8;
std::string openMaster(Id id);
std::string size(uint64_t bytes); // SIZE_BYTES long

} // namespace ostrel::apps::cli::ebml

#endif
