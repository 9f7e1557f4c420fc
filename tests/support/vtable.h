// Slots of virtual operations, as the C++ ABI of this platform lays them out.
#ifndef OSTREL_TESTS_SUPPORT_VTABLE_H
#define OSTREL_TESTS_SUPPORT_VTABLE_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ostrel::support {

// The slot, counted from 1, that a pointer to a virtual member function calls; 0 for one that is not virtual.
template <typename Member>
std::size_t slotOf(Member member) {
    struct {
        std::uintptr_t pointer;
        std::ptrdiff_t adjustment;
    } parts;
    static_assert(sizeof member == sizeof parts, "not the Itanium C++ ABI");
    std::memcpy(&parts, &member, sizeof parts);
#if defined(__aarch64__) || defined(__arm__)
    const bool isVirtual = parts.adjustment & 1;
    const std::uintptr_t offset = parts.pointer;
#else
    const bool isVirtual = parts.pointer & 1;
    const std::uintptr_t offset = parts.pointer - 1;
#endif
    return isVirtual ? offset / sizeof(void*) + 1 : 0;
}

// What stands in a slot, counted from 1, of an object's virtual table.
template <typename Object>
void* inSlot(const Object& object, std::size_t slot) {
    void* const* table;
    std::memcpy(&table, reinterpret_cast<const void*>(&object), sizeof table);
    return table[slot - 1];
}

} // namespace ostrel::support

#endif
