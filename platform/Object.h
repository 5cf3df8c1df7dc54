#pragma once

#include <memory>

namespace tarvo::platform {

/// Root of every class and interface that is held by `shared_ptr` and may hand out weak references to itself.
/// Interfaces inherit it virtually, so that an object of several interfaces has one identity and one counter.
class Object : public std::enable_shared_from_this<Object> {
public:
    virtual ~Object() = default;

protected:
    Object() = default;
    Object(const Object&) = default;
    Object& operator=(const Object&) = default;
};

/// Typed weak reference to an object from inside its own members. Empty in a constructor, in a destructor and for an
/// object that no `shared_ptr` holds: a closure that captures it then ends without doing anything.
template <class T>
std::weak_ptr<T> weakSelf(T* self) {
    auto owner = self->weak_from_this().lock();
    return owner ? std::weak_ptr<T>(std::shared_ptr<T>(owner, self)) : std::weak_ptr<T>();
}

/// Typed strong reference, empty in the cases that `weakSelf` describes.
template <class T>
std::shared_ptr<T> strongSelf(T* self) {
    return weakSelf(self).lock();
}

}  // namespace tarvo::platform
