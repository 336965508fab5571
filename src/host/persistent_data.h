// Access to the host's preferences: sections of keys with values that persist after the program
// ends. Names and texts are zero-terminated and narrow. Owns only its acquired suite.
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"
#include "support/text.h"

namespace AEO {

class PersistentData : public ObjectBase {
public:
    explicit PersistentData(SPBasicSuite* basic);

    // The value, as long as the host reports, with a final zero if the host counts it. Empty for a
    // missing key; empty or all zeros if the host fails.
    NarrowString getString(const char* section, const char* key);

    A_long numSections();
    NarrowString sectionKey(A_long index); // cut at 255 bytes, also valueKey
    bool doesKeyExist(const char* section, const char* key);
    A_long numKeys(const char* section);
    NarrowString valueKey(const char* section, A_long index);
    // Calls the host: writes what fits into the buffer and returns the size of the whole value.
    A_u_long readString(const char* section, const char* key, const char* fallback,
                        A_long bufferSize, char* buffer);
    A_long getLong(const char* section, const char* key, A_long fallback);
    void setString(const char* section, const char* key, const char* value);

private:
    AEGP_PersistentBlobH blob_ = nullptr; // owned by the host
    SuiteHolder<AEGP_PersistentDataSuite1> preferences_;
};

} // namespace AEO
