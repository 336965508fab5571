// Which objects of a kind exist at the moment: how the host tells a handle that stands for
// something from one that does not, without touching what it points at.
//
// A member `Living<T> living{this};`, declared before the other data so that it ends last.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "sdk/pf_types.h"

namespace hostkit {

template<class T>
class Living {
public:
    explicit Living(T* self) : token_(self, [](T*) {}), number_(++made()) {
        objects().push_back(self);
    }
    ~Living() { std::erase(objects(), token_.get()); }
    Living(const Living&) = delete;
    Living& operator=(const Living&) = delete;

    // Locks to null once the object is gone; a lock keeps nothing alive.
    std::weak_ptr<T> watch() const { return token_; }

    // From 1, in the order in which objects of the kind were made; never given twice.
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
