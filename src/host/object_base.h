// The root of the wrappers: small stack objects that pair a handle of the host with the suites that
// work on it, and the frame of all their operations.
//
// An error is sticky: the operation that failed and every later one of the same object do nothing
// more and give 0, a null handle, false or empty text. Nobody shares errors: the next wrapper of a
// chain starts without one. Wrappers need a running command and never outlive it.
#pragma once

#include <tuple>
#include <type_traits>

#include "host/suite_holder.h"
#include "sdk/aegp_types.h"

namespace AEO {

class ObjectBase {
public:
    virtual ~ObjectBase() = default;
    ObjectBase(const ObjectBase&) = delete;
    ObjectBase& operator=(const ObjectBase&) = delete;

    // The host's code of the call that failed; 0 while all is well.
    A_Err err() const { return err_; }

protected:
    ObjectBase() = default;

    // The frame of an operation: one call of the host, unless the object has failed before.
    template<class Suite, Missing missing, class... Parameters, class... Arguments>
    void call(SuiteHolder<Suite, missing>& holder, A_Err (*Suite::*function)(Parameters...),
              Arguments... arguments) {
        if (err_ != 0)
            return;
        const Suite* suite = holder.suite();
        err_ = suite == nullptr ? holder.refusal() : (suite->*function)(arguments...);
    }

    // The same for a call whose last argument takes the result; a failure leaves the result 0.
    template<class Suite, Missing missing, class... Parameters, class... Arguments>
    auto query(SuiteHolder<Suite, missing>& holder, A_Err (*Suite::*function)(Parameters...),
               Arguments... arguments) {
        using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
        using Result = std::remove_pointer_t<Last>;
        Result result = Result(); // zeroes the whole of a union, which braces need not
        call(holder, function, arguments..., &result);
        return err_ == 0 ? result : Result();
    }

    // The call with which a destructor gives something back: made whatever err is, and its own
    // failure stays without consequences.
    template<class Suite, Missing missing, class... Parameters, class... Arguments>
    static void dispose(SuiteHolder<Suite, missing>& holder,
                        A_Err (*Suite::*function)(Parameters...), Arguments... arguments) noexcept {
        if (const Suite* suite = holder.suiteOrNull())
            (suite->*function)(arguments...);
    }

private:
    A_Err err_ = 0;
};

} // namespace AEO
