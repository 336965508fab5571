// How one object keeps one suite of its own: acquired on first use, given back when the holder is
// destroyed, if it was had at all.
//
// A holder may stand alone, or it may fall back on the table of the running command when the host
// refuses it the suite. Holders live on the stack of a command; the basic suite may be null, which
// counts as a refusal with the code 516.
#pragma once

#include "command/command_scope.h"
#include "sdk/pf_types.h"
#include "sdk/sp_basic.h"

// What happens when a suite can't be had.
enum class Missing {
    Skips, // the call is left out, and the code tells why
    Ends,  // the running command's table is asked; if that has no such suite, the command ends
};

template<class Suite, Missing missing = Missing::Skips>
class SuiteHolder {
public:
    explicit SuiteHolder(SPBasicSuite* basic) : basic_(basic) {}
    ~SuiteHolder() {
        if (suite_ != nullptr)
            basic_->ReleaseSuite(Suite::name, Suite::version);
    }
    SuiteHolder(const SuiteHolder&) = delete;
    SuiteHolder& operator=(const SuiteHolder&) = delete;

    // The suite for one call. Missing::Skips gives null when it can't be had; Missing::Ends then
    // throws `long` 516.
    const Suite* suite() {
        acquire();
        if constexpr (missing == Missing::Ends) {
            if (suite_ == nullptr)
                return currentTable().template suite<Suite>();
        }
        return suite_;
    }

    // The suite for a call in a destructor: null when it can't be had, whatever the holder's kind.
    const Suite* suiteOrNull() noexcept {
        acquire();
        if constexpr (missing == Missing::Ends) {
            if (suite_ == nullptr && currentSuites() != nullptr)
                return currentSuites()->template find<Suite>();
        }
        return suite_;
    }

    // Why the host did not lend the suite at the last attempt; 516 when it answered success and
    // lent nothing.
    PF_Err refusal() const { return code_ != 0 ? code_ : PF_Err_BAD_CALLBACK_PARAM; }

    SPBasicSuite* basic() const { return basic_; }

private:
    static SuiteTable& currentTable() {
        if (currentSuites() == nullptr)
            MissingSuiteError();
        return *currentSuites();
    }

    void acquire() {
        if (suite_ != nullptr)
            return;
        if (basic_ == nullptr) {
            code_ = PF_Err_BAD_CALLBACK_PARAM;
            return;
        }
        const void* lent = nullptr;
        code_ = basic_->AcquireSuite(Suite::name, Suite::version, &lent);
        suite_ = static_cast<const Suite*>(lent);
    }

    SPErr code_ = 0; // of AcquireSuite
    const Suite* suite_ = nullptr;
    SPBasicSuite* basic_;
};

// One call of a suite that is borrowed for this call only: the host's code, also when the suite
// can't be had.
template<class Suite, class... Parameters, class... Arguments>
PF_Err callSuite(SPBasicSuite* basic, PF_Err (*Suite::*function)(Parameters...),
                 Arguments... arguments) {
    SuiteHolder<Suite> holder(basic);
    const Suite* suite = holder.suite();
    return suite == nullptr ? holder.refusal() : (suite->*function)(arguments...);
}
