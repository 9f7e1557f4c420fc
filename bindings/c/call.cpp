#include "bindings/c/call.h"

#include <atomic>
#include <mutex>
#include <pthread.h>

namespace ostrel {
namespace c {

namespace {

// No struct will ever be larger: what claims to be was not filled in.
const size_t LARGEST_STRUCT = 1 << 20;

std::atomic<bool> forked{false};

} // namespace

void copyText(const char* utf8, size_t size, char* to, size_t bytes) {
    if (!to || bytes == 0)
        return;
    size_t length = std::min(size, bytes - 1);
    // Not in the middle of a character: what follows its first byte has the bits 10 in front.
    while (length > 0 && length < size && (static_cast<unsigned char>(utf8[length]) & 0xC0) == 0x80)
        --length;
    std::memcpy(to, utf8, length);
    to[length] = '\0';
}

void giveWords(const char* utf8, char* why, size_t whyBytes) {
    copyText(utf8, std::strlen(utf8), why, whyBytes);
    for (char* c = why; c && whyBytes > 0 && *c; ++c)
        if ((*c > 0 && *c < ' ') || *c == '\x7f')
            *c = ' ';
}

QString requiredText(const char* text, const char* what) {
    return QString::fromUtf8(&required(text, what));
}

void checkSize(size_t given, size_t least) {
    if (given < least || given > LARGEST_STRUCT)
        throw Failure(OSTREL_BAD_ARGUMENT, "The struct's first member is " + std::to_string(given) +
                                               ", and not its size, which is at least " +
                                               std::to_string(least));
}

bool inForkedChild() {
    return forked.load(std::memory_order_relaxed);
}

void noteUse() {
    static std::once_flag once;
    std::call_once(once, [] { pthread_atfork(nullptr, nullptr, [] { forked.store(true); }); });
}

int answerToException(char* why, size_t whyBytes) {
    try {
        throw;
    } catch (const Failure& failure) {
        giveWords(failure.what(), why, whyBytes);
        return failure.code();
    } catch (const std::bad_alloc&) {
        giveWords("There is not enough memory", why, whyBytes);
        return OSTREL_NO_MEMORY;
    } catch (const std::exception& exception) {
        giveWords(exception.what(), why, whyBytes);
    } catch (...) {
        giveWords("Something unknown has failed", why, whyBytes);
    }
    return OSTREL_FAILED;
}

} // namespace c
} // namespace ostrel

extern "C" const char* ostrel_version(void) {
    return OSTREL_VERSION;
}
