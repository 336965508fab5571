// Registry of the existing objects of a type: tells whether a handle is valid without dereferencing
// it.
//
// Use: a member `LiveObject<T> live{this};`, declared before the other data so that it is destroyed
// last.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "sdk/pf_types.h"

namespace hostkit {

template<class T>
class LiveObject {
public:
    explicit LiveObject(T* self) : token_(self, [](T*) {}), number_(++made()) {
        objects().push_back(self);
    }
    ~LiveObject() { std::erase(objects(), token_.get()); }
    LiveObject(const LiveObject&) = delete;
    LiveObject& operator=(const LiveObject&) = delete;

    // Expires when the object is destroyed; a lock does not extend the object's lifetime.
    std::weak_ptr<T> watch() const { return token_; }

    // Counted from 1 in the order of construction; never reused.
    A_long number() const { return number_; }

    // In the order of construction.
    static const std::vector<T*>& all() { return objects(); }

    // The object at that address, or null if there is none.
    static T* find(const void* address) {
        const auto found = std::find(objects().begin(), objects().end(), address);
        return found == objects().end() ? nullptr : *found;
    }

private:
    static std::vector<T*>& objects() {
        static std::vector<T*> instance;
        return instance;
    }
    static A_long& made() {
        static A_long count = 0;
        return count;
    }

    std::shared_ptr<T> token_; // has an empty deleter: it expires with the object and owns nothing
    A_long number_;
};

} // namespace hostkit
