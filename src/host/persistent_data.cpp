#include "host/persistent_data.h"

#include <array>

namespace AEO {

namespace {

using Suite = AEGP_PersistentDataSuite1;
using Name = std::array<char, 256>; // of a section or a key, with its terminating zero

NarrowString textOf(Name& name) {
    name.back() = 0;
    return name.data();
}

} // namespace

PersistentData::PersistentData(SPBasicSuite* basic) : preferences_(basic) {
    blob_ = query(preferences_, &Suite::AEGP_GetApplicationBlob);
}

// The host returns the length only as a result of a read.
NarrowString PersistentData::getString(const char* section, const char* key) {
    std::array<char, 4> beginning{};
    A_u_long size = readString(section, key, nullptr, beginning.size(), beginning.data());
    NarrowString text(size, '\0');
    if (size > 0)
        readString(section, key, nullptr, static_cast<A_long>(size), text.data());
    return text;
}

A_long PersistentData::numSections() {
    return query(preferences_, &Suite::AEGP_GetNumSections, blob_);
}

NarrowString PersistentData::sectionKey(A_long index) {
    Name name{};
    call(preferences_, &Suite::AEGP_GetSectionKeyByIndex, blob_, index,
         static_cast<A_long>(name.size()), name.data());
    return textOf(name);
}

bool PersistentData::doesKeyExist(const char* section, const char* key) {
    return query(preferences_, &Suite::AEGP_DoesKeyExist, blob_, section, key) != 0;
}

A_long PersistentData::numKeys(const char* section) {
    return query(preferences_, &Suite::AEGP_GetNumKeys, blob_, section);
}

NarrowString PersistentData::valueKey(const char* section, A_long index) {
    Name name{};
    call(preferences_, &Suite::AEGP_GetValueKeyByIndex, blob_, section, index,
         static_cast<A_long>(name.size()), name.data());
    return textOf(name);
}

A_u_long PersistentData::readString(const char* section, const char* key, const char* fallback,
                                    A_long bufferSize, char* buffer) {
    A_u_long size = 0;
    call(preferences_, &Suite::AEGP_GetString, blob_, section, key, fallback, bufferSize, buffer,
         &size);
    return size;
}

A_long PersistentData::getLong(const char* section, const char* key, A_long fallback) {
    return query(preferences_, &Suite::AEGP_GetLong, blob_, section, key, fallback);
}

void PersistentData::setString(const char* section, const char* key, const char* value) {
    call(preferences_, &Suite::AEGP_SetString, blob_, section, key, value);
}

} // namespace AEO
