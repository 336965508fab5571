// Owns one suite for one object: acquired on first use, released when the holder is destroyed.
//
// When the host refuses the suite, a holder of the kind UseTable takes the one in the table of the
// running command. Holders live on the stack of a command. The basic suite may be null; that counts
// as a refusal with the code 516.
#pragma once

#include "command/command_scope.h"
#include "sdk/pf_types.h"
#include "sdk/sp_basic.h"

// What a holder does when the host refuses its suite.
enum class OnRefusal {
    SkipCall, // leaves the call out; refusal() gives the reason
    UseTable, // takes the suite from the running command's table; ends the command if that fails
              // too
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

    // The suite for one call. When there is none, SkipCall gives null and UseTable throws `long`
    // 516.
    const Suite* suite() {
        acquire();
        if constexpr (onRefusal == OnRefusal::UseTable) {
            if (suite_ == nullptr)
                return currentTable().template suite<Suite>();
        }
        return suite_;
    }

    // The suite for a call in a destructor; null when there is none, for both kinds.
    const Suite* suiteOrNull() noexcept {
        acquire();
        if constexpr (onRefusal == OnRefusal::UseTable) {
            if (suite_ == nullptr && currentSuites() != nullptr)
                return currentSuites()->template find<Suite>();
        }
        return suite_;
    }

    // The host's code for the last attempt to acquire the suite; 516 when the host reported success
    // but gave no suite.
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

// Calls one function of a suite that is acquired for this call only. Gives the host's code, also
// when the suite is refused.
template<class Suite, class... Parameters, class... Arguments>
PF_Err callSuite(SPBasicSuite* basic, PF_Err (*Suite::*function)(Parameters...),
                 Arguments... arguments) {
    SuiteHolder<Suite> holder(basic);
    const Suite* suite = holder.suite();
    return suite == nullptr ? holder.refusal() : (suite->*function)(arguments...);
}
