// Lists that a client asks item by item.
#ifndef OSTREL_BINDINGS_C_LISTS_H
#define OSTREL_BINDINGS_C_LISTS_H

#include "bindings/c/handles.h"

#include <utility>
#include <vector>

namespace ostrel {
namespace c {

// Never changed, so that any number of threads may read it.
template <typename Item>
class List : public Object {
public:
    explicit List(std::vector<Item> items) : items_(std::move(items)) {}
    size_t count() const { return items_.size(); }
    const Item& at(size_t index) const {
        if (index >= items_.size())
            throw Failure(OSTREL_NOTHING, "The list ends before");
        return items_[index];
    }

private:
    const std::vector<Item> items_;
};

// Where a call leaves a list: both are looked at before anything is asked for.
class ListAnswer {
public:
    ListAnswer(ostrel_handle* list, size_t* count)
        : list_(required(list, "The place for the list")),
          count_(required(count, "The place for the number of items")) {}
    template <typename Item>
    int give(std::vector<Item> items) const {
        const auto list = std::make_shared<List<Item>>(std::move(items));
        list_ = addHandle(list);
        count_ = list->count();
        return OSTREL_OK;
    }

private:
    ostrel_handle& list_;
    size_t& count_;
};

// what: "a list of cameras". describe(item, info) fills the struct, which is 0 throughout.
template <typename Item, typename Info, typename Describe>
int giveItem(ostrel_handle handle, size_t index, Info* to, const char* what, Describe describe) {
    const Answer<Info> answer(to);
    const auto list = objectOf<List<Item>>(handle, what);
    Info info = {};
    describe(list->at(index), info);
    answer.give(info);
    return OSTREL_OK;
}

} // namespace c
} // namespace ostrel

#endif
