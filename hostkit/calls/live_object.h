// The registry of the objects of a kind that exist at the moment: it tells whether a handle is
// valid without access to what it points at.
//
// A member `LiveObject<T> live{this};`, declared before the other data so that it ends last.
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

    // Locks to null once the object is gone; a lock keeps nothing alive.
    std::weak_ptr<T> watch() const { return token_; }

    // From 1, in the order in which objects of the kind were made; never reused.
    A_long number() const { return number_; }

    // In the order in which they were made.
    static const std::vector<T*>& all() { return objects(); }

    // The object at that address; null: there is none.
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

    std::shared_ptr<T> token_; // owns nothing: it only ends with the object
    A_long number_;
};

} // namespace hostkit
