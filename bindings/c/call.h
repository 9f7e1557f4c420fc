// What every call of the C interface does: codes, words, texts and structs of the caller's.
#ifndef OSTREL_BINDINGS_C_CALL_H
#define OSTREL_BINDINGS_C_CALL_H

#include <ostrel/camera_c.h>

#include <QtCore/QString>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <new>
#include <string>

namespace ostrel {
namespace c {

// What ends a call: its code and its words.
class Failure : public std::exception {
public:
    Failure(int code, const std::string& words) : code_(code), words_(words) {}
    int code() const { return code_; }
    const char* what() const noexcept override { return words_.c_str(); }

private:
    int code_;
    std::string words_;
};

// Copies as much of the text as fits, whole characters and a zero byte. to may be null.
void copyText(const char* utf8, size_t size, char* to, size_t bytes);
// What is said about a call: one line, whatever the names in it are. why may be null. Takes no memory.
void giveWords(const char* utf8, char* why, size_t whyBytes);

inline void copyText(const std::string& utf8, char* to, size_t bytes) {
    copyText(utf8.data(), utf8.size(), to, bytes);
}
template <size_t bytes>
void copyText(const QString& text, char (&to)[bytes]) {
    const QByteArray utf8 = text.toUtf8();
    copyText(utf8.constData(), static_cast<size_t>(utf8.size()), to, bytes);
}

// Throws unless the pointer is there; what: "no memory for the answer".
template <typename T>
T& required(T* pointer, const char* what) {
    if (!pointer)
        throw Failure(OSTREL_BAD_ARGUMENT, std::string(what) + " is a null pointer");
    return *pointer;
}
QString requiredText(const char* text, const char* what);

// Throws unless the struct's size may be one: of this release, or of a later one.
void checkSize(size_t given, size_t least);

// A struct of the caller's that is filled. It is untouched until give(); the size of its first release never
// changes, however many members follow.
template <typename T>
class Answer {
public:
    explicit Answer(T* to, size_t least = sizeof(T)) : to_(required(to, "The struct for the answer")) {
        checkSize(to_.size, least);
    }
    void give(const T& answer) const {
        const size_t size = to_.size;
        // A struct of the caller's release, which may have more or fewer members than this one.
        char* const bytes = reinterpret_cast<char*>(&to_);
        std::memcpy(bytes, &answer, std::min(size, sizeof(T)));
        if (size > sizeof(T))
            std::fill(bytes + sizeof(T), bytes + size, '\0');
        std::memcpy(bytes, &size, sizeof size);
    }

private:
    T& to_;
};

// In the child of a process that has used the library: its threads are not there, its locks may be held.
bool inForkedChild();
// From now on a child is one.
void noteUse();

// The answer to an exception that is being handled, with its words.
int answerToException(char* why, size_t whyBytes);

// Makes a call of the interface: work() answers the code.
template <typename Work>
int call(char* why, size_t whyBytes, Work work) {
    giveWords("", why, whyBytes);
    if (inForkedChild()) {
        giveWords("This process was forked from one that has used the library, which cannot be used in it",
                  why, whyBytes);
        return OSTREL_FORKED;
    }
    try {
        noteUse();
        return work();
    } catch (...) {
        return answerToException(why, whyBytes);
    }
}

} // namespace c
} // namespace ostrel

#endif
