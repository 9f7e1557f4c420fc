// Results as lines of JSON, one object a line.
#ifndef OSTREL_BENCH_CAPTURE_JSON_H
#define OSTREL_BENCH_CAPTURE_JSON_H

#include <cstdio>
#include <string>
#include <vector>

namespace bench {

// Texts must need no escapes.
class JsonLine {
public:
    explicit JsonLine(const char* kind) : text_(std::string("{\"kind\": \"") + kind + "\"") {}
    JsonLine& add(const char* name, const std::string& value) { return raw(name, '"' + value + '"'); }
    JsonLine& add(const char* name, double value) {
        char digits[40];
        std::snprintf(digits, sizeof digits, "%.4f", value);
        return raw(name, digits);
    }
    JsonLine& add(const char* name, const std::vector<double>& values) {
        std::string list = "[";
        for (const double value : values) {
            char digits[40];
            std::snprintf(digits, sizeof digits, "%s%.4f", list.size() > 1 ? ", " : "", value);
            list += digits;
        }
        return raw(name, list + "]");
    }
    void write() {
        std::printf("%s}\n", text_.c_str());
        std::fflush(stdout);
    }

private:
    JsonLine& raw(const char* name, const std::string& value) {
        text_ += std::string(", \"") + name + "\": " + value;
        return *this;
    }
    std::string text_;
};

} // namespace bench

#endif
