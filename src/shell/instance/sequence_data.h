// The data of one instance of the effect: its file and two flags. Everything else comes from the
// file and from the controls.
//
// The handles of live objects are listed in GlobalData; any other sequence handle of the host is a
// flat block from a project. Needs a running command, and GlobalData.
#pragma once

#include <string_view>

#include "sdk/pf_types.h"
#include "shell/global_data.h"
#include "support/text.h"

// What a project stores of an instance.
struct StoredSequence {
    NarrowString filePath; // UTF-8; empty: none was chosen
    bool defaultsPending = true;
};

// Reads a flat block. Throws `long` 4 if it cannot be locked.
StoredSequence readFlatBlock(PF_Handle block);

// A new handle with a block of version 1. Throws `long` 4 if there is no memory.
PF_Handle writeFlatBlock(const StoredSequence& sequence);

class SequenceData : public aeBase {
public:
    explicit SequenceData(GlobalData& owner, const StoredSequence& stored = {});
    ~SequenceData() override;

    void setPath(std::string_view text) { filePath = text; }

    NarrowString filePath;
    bool controlsBuilt = false;  // the controls show this file
    bool defaultsPending = true; // the kernel's defaults must still be written to the controls

private:
    GlobalData& owner_;
};

// The live object in a handle; null for a null handle and for a flat block.
SequenceData* liveSequence(const GlobalData& globalData, PF_Handle handle);
