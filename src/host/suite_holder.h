// Owns one suite for one object: acquired on first use, released when the holder is destroyed.
//
// If the host does not have the suite, a holder of the kind UseTable takes the one in the table of
// the running command. Holders are on the stack of a command. The basic suite may be null; that
// counts as a failure with the code 516.
#pragma once

#include "command/command_scope.h"
#include "sdk/pf_types.h"
#include "sdk/sp_basic.h"

// What a holder does if its suite cannot be acquired.
enum class OnRefusal {
    SkipCall, // omits the call; refusal() gives the reason
    UseTable, // takes the suite from the running command's table, or ends the command
};

template<class Suite, OnRefusal onRefusal = OnRefusal::SkipCall>
class SuiteHolder {
public:
    explicit SuiteHolder(SPBasicSuite* basic) : basic_(basic) {}
    ~SuiteHolder() {
        if (suite_ != nullptr)
            basic_->ReleaseSuite(Suite::name, Suite::version);
    }
    SuiteHolder(const SuiteHolder&) = delete;
    SuiteHolder& operator=(const SuiteHolder&) = delete;

    // The suite for one call. If there is none, SkipCall returns null and UseTable throws `long`
    // 516.
    const Suite* suite() {
        acquire();
        if constexpr (onRefusal == OnRefusal::UseTable) {
            if (suite_ == nullptr)
                return currentTable().template suite<Suite>();
        }
        return suite_;
    }

    // The suite for a call in a destructor; null if there is none, for both kinds.
    const Suite* suiteOrNull() noexcept {
        acquire();
        if constexpr (onRefusal == OnRefusal::UseTable) {
            if (suite_ == nullptr && currentSuites() != nullptr)
                return currentSuites()->template find<Suite>();
        }
        return suite_;
    }

    // The host's code for the last attempt to acquire the suite; 516 if the host reported success
    // but returned no suite.
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
        const void* acquired = nullptr;
        code_ = basic_->AcquireSuite(Suite::name, Suite::version, &acquired);
        suite_ = static_cast<const Suite*>(acquired);
    }

    SPErr code_ = 0; // of AcquireSuite
    const Suite* suite_ = nullptr;
    SPBasicSuite* basic_;
};

// Calls one function of a suite that is acquired for this call only. Returns the host's code, also
// if the suite cannot be acquired.
template<class Suite, class... Parameters, class... Arguments>
PF_Err callSuite(SPBasicSuite* basic, PF_Err (*Suite::*function)(Parameters...),
                 Arguments... arguments) {
    SuiteHolder<Suite> holder(basic);
    const Suite* suite = holder.suite();
    return suite == nullptr ? holder.refusal() : (suite->*function)(arguments...);
}
