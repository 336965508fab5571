#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/calls/call_frame.h"
#include "hostkit/host.h"
#include "hostkit/suites/tables.h"

namespace hostkit::tables {

namespace {

AEGP_PersistentBlobH theBlob() {
    return reinterpret_cast<AEGP_PersistentBlobH>(&Host::current().preferences);
}

// Calls `work` with the preferences. `isComplete` is false if one of the call's pointers is null.
template<class Work>
A_Err onBlob(const char* call, AEGP_PersistentBlobH blob, bool isComplete, Work work) {
    return contractCall<AEGP_PersistentDataSuite1>(call, [&]() -> A_Err {
        if (blob != theBlob())
            return misuse(call, "an unknown blob");
        if (!isComplete)
            return misuse(call, "a null pointer");
        return work(Host::current().preferences);
    });
}

// Copies as much of the text and its terminating zero as fits; a truncated text has no terminating
// zero.
void copyWhatFits(const std::string& text, A_long bufferSize, char* buffer) {
    const auto fits = std::min(text.size() + 1, static_cast<std::size_t>(bufferSize));
    std::copy_n(text.c_str(), fits, buffer);
}

A_Err giveName(const char* call, const std::vector<std::string>& names, A_long index,
               A_long bufferSize, char* buffer) {
    if (index < 0 || static_cast<std::size_t>(index) >= names.size())
        return misuse(call,
                      "index " + std::to_string(index) + " of " + std::to_string(names.size()));
    if (bufferSize < 0)
        return misuse(call, "a negative size");
    copyWhatFits(names[static_cast<std::size_t>(index)], bufferSize, buffer);
    return PF_Err_NONE;
}

A_Err getApplicationBlob(AEGP_PersistentBlobH* blob) {
    constexpr const char* call = "AEGP_GetApplicationBlob";
    return contractCall<AEGP_PersistentDataSuite1>(call, [&] {
        if (blob == nullptr)
            return misuse(call, "the blob pointer is null");
        *blob = theBlob();
        return PF_Err_NONE;
    });
}

A_Err getNumSections(AEGP_PersistentBlobH blob, A_long* count) {
    return onBlob("AEGP_GetNumSections", blob, count != nullptr, [&](const Preferences& all) {
        *count = static_cast<A_long>(all.sections().size());
        return PF_Err_NONE;
    });
}

A_Err getSectionKeyByIndex(AEGP_PersistentBlobH blob, A_long index, A_long bufferSize,
                           char* section) {
    constexpr const char* call = "AEGP_GetSectionKeyByIndex";
    return onBlob(call, blob, section != nullptr, [&](const Preferences& all) {
        return giveName(call, all.sections(), index, bufferSize, section);
    });
}

A_Err doesKeyExist(AEGP_PersistentBlobH blob, const char* section, const char* key,
                   A_Boolean* exists) {
    const bool isComplete = section != nullptr && key != nullptr && exists != nullptr;
    return onBlob("AEGP_DoesKeyExist", blob, isComplete, [&](const Preferences& all) {
        *exists = all.get(section, key).has_value() ? 1 : 0;
        return PF_Err_NONE;
    });
}

A_Err getNumKeys(AEGP_PersistentBlobH blob, const char* section, A_long* count) {
    const bool isComplete = section != nullptr && count != nullptr;
    return onBlob("AEGP_GetNumKeys", blob, isComplete, [&](const Preferences& all) {
        *count = static_cast<A_long>(all.keys(section).size());
        return PF_Err_NONE;
    });
}

A_Err getValueKeyByIndex(AEGP_PersistentBlobH blob, const char* section, A_long index,
                         A_long bufferSize, char* key) {
    constexpr const char* call = "AEGP_GetValueKeyByIndex";
    const bool isComplete = section != nullptr && key != nullptr;
    return onBlob(call, blob, isComplete, [&](const Preferences& all) {
        return giveName(call, all.keys(section), index, bufferSize, key);
    });
}

A_Err getString(AEGP_PersistentBlobH blob, const char* section, const char* key,
                const char* fallback, A_long bufferSize, char* buffer, A_u_long* actualSize) {
    constexpr const char* call = "AEGP_GetString";
    const bool isComplete = section != nullptr && key != nullptr && actualSize != nullptr &&
                            (buffer != nullptr || bufferSize == 0);
    return onBlob(call, blob, isComplete, [&](const Preferences& all) {
        if (bufferSize < 0)
            return misuse(call, "a negative size");
        std::optional<std::string> value = all.get(section, key);
        if (!value && fallback != nullptr)
            value = fallback;
        *actualSize = value ? static_cast<A_u_long>(value->size() + 1) : 0;
        if (value && bufferSize > 0)
            copyWhatFits(*value, bufferSize, buffer);
        return PF_Err_NONE;
    });
}

A_Err getLong(AEGP_PersistentBlobH blob, const char* section, const char* key, A_long fallback,
              A_long* value) {
    const bool isComplete = section != nullptr && key != nullptr && value != nullptr;
    return onBlob("AEGP_GetLong", blob, isComplete, [&](const Preferences& all) {
        *value = fallback;
        const std::optional<std::string> text = all.get(section, key);
        if (!text)
            return PF_Err_NONE;
        A_long number = 0;
        const char* end = text->data() + text->size();
        const auto [rest, error] = std::from_chars(text->data(), end, number);
        if (error != std::errc() || rest != end)
            return PF_Err_INTERNAL_STRUCT_DAMAGED;
        *value = number;
        return PF_Err_NONE;
    });
}

A_Err setString(AEGP_PersistentBlobH blob, const char* section, const char* key,
                const char* value) {
    const bool isComplete = section != nullptr && key != nullptr && value != nullptr;
    return onBlob("AEGP_SetString", blob, isComplete, [&](Preferences& all) {
        try {
            all.set(section, key, value);
        } catch (const std::runtime_error&
                     error) { // an error of the file system is no fault of the module
            Host::current().infoPanel.show({"The preferences are not saved", error.what()});
            return PF_Err_INTERNAL_STRUCT_DAMAGED;
        }
        return PF_Err_NONE;
    });
}

} // namespace

const AEGP_PersistentDataSuite1& persistentDataSuite() {
    static const AEGP_PersistentDataSuite1 table = {
        getApplicationBlob, getNumSections, getSectionKeyByIndex,
        doesKeyExist,       getNumKeys,     getValueKeyByIndex,
        getString,          getLong,        setString};
    return table;
}

} // namespace hostkit::tables
