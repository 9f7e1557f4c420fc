// Operations in which every allocation fails in turn.
//
// Counted and made to fail is what our code takes from operator new, by itself or by way of the standard
// library and of templates, and what it maps for large frames. What Qt, libobjc and GNUstep take inside their
// own libraries is left alone: most of it comes from malloc, and what they do without memory is theirs.
#ifndef OSTREL_TESTS_UNIT_FAILURE_FAILING_ALLOCATIONS_H
#define OSTREL_TESTS_UNIT_FAILURE_FAILING_ALLOCATIONS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <new>

namespace ostrel::tests {

// Blocks of ours that were taken since it was made and that nobody has freed, of all threads. Those that have
// come since then must have gone: a thread that ends gives back what its pools hold a little later than those
// who wait for it learn of its end.
class Leftovers {
public:
    Leftovers();
    long blocks() const;

private:
    std::size_t threads_;
    long blocks_;
};

// While it lives, the n-th allocation of ours on this thread throws std::bad_alloc (n from 1).
class FailingAllocation {
public:
    explicit FailingAllocation(int n);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    bool cameToIt() const;
};

// None fails on this thread while it is paused; calls nest.
void pauseFailing(bool paused);

struct Outcome {
    bool thrown = false;  // std::bad_alloc came out of the operation
    bool reached = false; // it came to the allocation that was to fail
};

template <typename Operation>
Outcome runFailingAt(int n, Operation operation) {
    Outcome outcome;
    const FailingAllocation failing(n);
    try {
        operation();
    } catch (const std::bad_alloc&) {
        outcome.thrown = true;
    }
    outcome.reached = failing.cameToIt();
    return outcome;
}

// What is to become of the exception.
enum class Expect {
    PassedOn,
    PassedOnOrFrameLost // pictures are made behind the scenes: without memory for one the frame is lost
};

// Runs the operation with its first allocation failing, then its second, until it needs no more. attempt(n)
// answers the Outcome. An attempt in which one failed must not leave more behind than one that went well,
// which may keep framework objects by design. Returns how many failed.
template <typename Attempt>
int failEachInTurn(Attempt attempt, Expect expected = Expect::PassedOn) {
    const int beyondAll = 1000000;
    for (int i = 0; i < 4; ++i)
        attempt(beyondAll); // fills what is kept for good: tables, pools
    long kept = 0;
    for (int i = 0; i < 3; ++i) { // a thread of before may end during the first of them
        const Leftovers ofSuccess;
        attempt(beyondAll);
        kept = std::max(kept, ofSuccess.blocks());
    }
    for (int n = 1; n < 10000; ++n) {
        Leftovers leftovers;
        Outcome outcome = attempt(n);
        if (leftovers.blocks() > kept) { // a pool may have come to need one block more, but not each time
            leftovers = Leftovers();
            outcome = attempt(n);
        }
        if (expected == Expect::PassedOn || !outcome.reached) {
            EXPECT_EQ(outcome.thrown, outcome.reached) << "allocation " << n;
        }
        EXPECT_LE(leftovers.blocks(), kept) << "allocation " << n << " leaks when it fails";
        if (!outcome.reached)
            return n - 1;
        if (::testing::Test::HasFatalFailure())
            break;
    }
    ADD_FAILURE() << "no end of allocations";
    return 0;
}

} // namespace ostrel::tests

#endif
