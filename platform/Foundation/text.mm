#include "platform/Foundation/text.h"

#include <clocale>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace ostrel::foundation {

namespace {

// What a program sets as its locale must not turn the points of numbers into commas.
template <typename Value>
int printInNeutralLocale(char* text, std::size_t size, const std::string& directive, Value value) {
    static const locale_t utf8 = newlocale(LC_ALL_MASK, "C.UTF-8", locale_t());
    static const locale_t neutral = utf8 ? utf8 : newlocale(LC_ALL_MASK, "C", locale_t());
    const locale_t before = uselocale(neutral);
    const int length = std::snprintf(text, size, directive.c_str(), value);
    uselocale(before);
    return length;
}

// The text with U+FFFD in the place of each byte that belongs to no character.
std::string repaired(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const std::size_t bytes = bytesOfCharacter(text);
        result += bytes ? text.substr(0, bytes) : "\uFFFD";
        text.remove_prefix(bytes ? bytes : 1);
    }
    return result;
}

// One walk over a format.
class Formatter {
public:
    Formatter(const char* format, va_list arguments) : at_(format) { va_copy(arguments_, arguments); }
    ~Formatter() { va_end(arguments_); }
    Formatter(const Formatter&) = delete;
    Formatter& operator=(const Formatter&) = delete;

    std::string text() {
        while (*at_) {
            const char* const percent = strchrnul(at_, '%');
            text_.append(at_, percent);
            at_ = percent;
            if (*at_)
                conversion();
        }
        return repaired(text_);
    }

private:
    // From its %: flags, width, precision, length, and the letter.
    void conversion() {
        const char* const start = at_++;
        specification_ = '%' + take("-+ #0'");
        specification_ += number();
        if (*at_ == '.') {
            ++at_;
            const std::string precision = number();
            if (precision[0] != '-') // below zero: as if there were none
                specification_ += '.' + precision;
        }
        length_ = take("hlqjztL");
        const char letter = *at_;
        at_ += letter ? 1 : 0;
        if (!convert(letter))
            text_.append(start, at_); // as it stands
    }

    std::string take(const char* characters) {
        const char* const start = at_;
        at_ += std::strspn(at_, characters);
        return std::string(start, at_);
    }

    std::string number() {
        if (*at_ != '*')
            return take("0123456789");
        ++at_;
        return std::to_string(va_arg(arguments_, int));
    }

    bool convert(char letter) {
        if (letter == '%')
            text_ += letter;
        else if (letter == '@')
            object(va_arg(arguments_, id));
        else if (letter == 'p')
            pointer(va_arg(arguments_, uintptr_t));
        else if (letter == 's')
            print(letter, va_arg(arguments_, const void*));
        else if (letter == 'c' && length_ == "l")
            print(letter, va_arg(arguments_, wint_t));
        else if (letter && std::strchr("aAeEfFgG", letter))
            length_ == "L" ? print(letter, va_arg(arguments_, long double))
                           : print(letter, va_arg(arguments_, double));
        else if (letter && std::strchr("cdiouxX", letter))
            whole(letter);
        else
            return false;
        return true;
    }

    // Signed and unsigned numbers are passed alike.
    void whole(char letter) {
        if (length_.empty() || length_[0] == 'h')
            print(letter, va_arg(arguments_, int));
        else if (length_ == "l")
            print(letter, va_arg(arguments_, long));
        else if (length_ == "z" || length_ == "t")
            print(letter, va_arg(arguments_, std::ptrdiff_t));
        else
            print(letter, va_arg(arguments_, long long));
    }

    void object(id object) {
        NSString* const description = object ? [object description] : @"(null)";
        text_ += [description UTF8String];
    }

    // Where it points to nothing as well.
    void pointer(uintptr_t value) {
        text_ += "0x";
        length_ = "j";
        print('x', static_cast<uintmax_t>(value));
    }

    template <typename Value>
    void print(char letter, Value value) {
        specification_ += length_ + letter;
        const int length = printInNeutralLocale(nullptr, 0, specification_, value);
        if (length < 0)
            return; // a wide character that is none
        const std::size_t before = text_.size();
        text_.resize(before + static_cast<std::size_t>(length) + 1);
        printInNeutralLocale(&text_[before], static_cast<std::size_t>(length) + 1, specification_, value);
        text_.pop_back();
    }

    const char* at_;
    va_list arguments_;
    std::string text_;
    std::string specification_, length_; // of the conversion at hand
};

} // namespace

std::size_t bytesOfCharacter(std::string_view text) {
    static const char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000}; // that takes so many bytes
    const auto first = static_cast<unsigned char>(text[0]);
    if (first < 0x80)
        return 1;
    const std::size_t bytes = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    if (first < 0xC0 || first > 0xF7 || text.size() < bytes)
        return 0;
    char32_t value = first & (0x7F >> bytes);
    for (std::size_t i = 1; i < bytes; ++i) {
        const auto next = static_cast<unsigned char>(text[i]);
        if ((next & 0xC0) != 0x80)
            return 0;
        value = value << 6 | (next & 0x3F);
    }
    const bool isSurrogate = 0xD800 <= value && value <= 0xDFFF;
    return value < smallest[bytes] || isSurrogate || value > 0x10FFFF ? 0 : bytes;
}

std::string formatted(NSString* format, va_list arguments) {
    return Formatter(format ? [format UTF8String] : "(null)", arguments).text();
}

} // namespace ostrel::foundation
