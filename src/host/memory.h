// The owner of a memory handle, in which the host returns text of variable length, and two
// functions that read such text.
#pragma once

#include "host/object_base.h"
#include "sdk/aegp_suites.h"
#include "support/text.h"

namespace AEO {

class Memory : public ObjectBase {
public:
    // Takes over the handle, which may be null.
    Memory(SPBasicSuite* basic, AEGP_MemHandle handle);
    // A new handle; the name is for the host's own lists, the size in bytes.
    Memory(SPBasicSuite* basic, const char* what, AEGP_MemSize size, AEGP_MemFlag flags);
    // Frees the handle, locked or not. After an error the handle may be invalid and is not freed.
    ~Memory() override;

    AEGP_MemHandle handle() const { return handle_; }

    // The address of the contents; null for a null handle, and if the host fails.
    void* lock();
    void unlock();
    AEGP_MemSize size(); // bytes
    void resize(const char* what, AEGP_MemSize size);

private:
    AEGP_MemHandle handle_ = nullptr;
    SuiteHolder<AEGP_MemorySuite1> memories_;
};

// The zero-terminated text in a memory handle, which is freed. Empty for a null handle, and if the
// host cannot lock it.
NarrowString readText(SPBasicSuite* basic, AEGP_MemHandle handle);
WideString readWideText(SPBasicSuite* basic, AEGP_MemHandle handle);

} // namespace AEO
