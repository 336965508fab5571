// The base class of the wrappers: small stack objects with a handle of the host and the suites for
// it.
//
// Errors are sticky: after a failure, every operation of the same object does nothing and returns
// 0, a null handle, false or empty text. Each object has its own error. Wrappers need a running
// command and must not outlive it.
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

    // The host's code of the call that failed; 0 if none has failed.
    A_Err err() const { return err_; }

protected:
    ObjectBase() = default;

    // Makes one call of the host, unless an earlier call of this object failed.
    template<class Suite, OnRefusal onRefusal, class... Parameters, class... Arguments>
    void call(SuiteHolder<Suite, onRefusal>& holder, A_Err (*Suite::*function)(Parameters...),
              Arguments... arguments) {
        if (err_ != 0)
            return;
        const Suite* suite = holder.suite();
        err_ = suite == nullptr ? holder.refusal() : (suite->*function)(arguments...);
    }

    // The same for a call whose last argument receives the result; a failure leaves the result 0.
    template<class Suite, OnRefusal onRefusal, class... Parameters, class... Arguments>
    auto query(SuiteHolder<Suite, onRefusal>& holder, A_Err (*Suite::*function)(Parameters...),
               Arguments... arguments) {
        using Last = std::tuple_element_t<sizeof...(Parameters) - 1, std::tuple<Parameters...>>;
        using Result = std::remove_pointer_t<Last>;
        Result result = Result(); // zeroes the whole of a union, which braces may not
        call(holder, function, arguments..., &result);
        return err_ == 0 ? result : Result();
    }

    // The call with which a destructor releases something: made regardless of err; its own failure
    // is ignored.
    template<class Suite, OnRefusal onRefusal, class... Parameters, class... Arguments>
    static void dispose(SuiteHolder<Suite, onRefusal>& holder,
                        A_Err (*Suite::*function)(Parameters...), Arguments... arguments) noexcept {
        if (const Suite* suite = holder.suiteOrNull())
            (suite->*function)(arguments...);
    }

private:
    A_Err err_ = 0;
};

} // namespace AEO
