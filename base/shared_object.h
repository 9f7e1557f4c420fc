// One way into a QSharedPointer that loses nothing.
#ifndef OSTREL_BASE_SHARED_OBJECT_H
#define OSTREL_BASE_SHARED_OBJECT_H

#include <QtCore/QSharedPointer>

#include <memory>
#include <utility>

namespace ostrel {

// QSharedPointer's own constructor frees nothing when there is no memory for its own part. Throws
// std::bad_alloc then; the object is gone.
template <typename T>
QSharedPointer<T> sharedObject(std::unique_ptr<T> object) {
    const QSharedPointer<T> pointer(object.get());
    object.release();
    return pointer;
}

} // namespace ostrel

#endif
