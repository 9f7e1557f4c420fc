// The first line of a Y4M stream: what its frames are. Everything that reads or writes Y4M goes by it.
#ifndef OSTREL_BASE_Y4M_HEADER_H
#define OSTREL_BASE_Y4M_HEADER_H

#include <stddef.h>
#include <stdint.h>

#include <string>

namespace ostrel {

// Frames a second that are played and written.
const double Y4M_LEAST_RATE = 0.001;
const double Y4M_GREATEST_RATE = 1000;

// How the colours of 8 bits lie. Widths and heights of their planes are rounded up.
enum Y4mColours {
    Y4M_420, // half the columns, half the rows
    Y4M_422, // half the columns
    Y4M_444,
    Y4M_MONO // none
};

struct Y4mHeader {
    int width; // pixels, 1 to LARGEST_SIDE
    int height;
    uint32_t rateNumerator; // frames a second; 25 where the line does not say
    uint32_t rateDenominator;
    Y4mColours colours;
    bool fullRange; // Y from 0 to 255 instead of 16 to 235
};

extern const char Y4M_MAGIC[]; // with which the line begins

// line: without its line break. Returns what is wrong with it in one printable line, empty when nothing is;
// header counts only then. Re-entrant.
std::string parseY4mHeader(const std::string& line, Y4mHeader& header);

} // namespace ostrel

#endif
