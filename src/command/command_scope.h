// The frame of one host command: while a CommandScope stands, the command's input record, its table
// of suites and with them the host's heap can be reached from anywhere.
//
// The entry point makes one on its stack before it looks at the command and destroys it last. A
// command that the host sends while another one runs pushes a scope of its own; the newest scope is
// the one that all code sees. One thread only.
#pragma once

#include "command/suite_table.h"
#include "sdk/pf_types.h"

// What a running command owns; lives in a locked host handle of its own.
struct CommandContext {
    PF_Handle handle; // the handle that holds this record
    PF_InData* inData;
    SuiteTable suites;
};

class CommandScope {
public:
    // inData may be null, and the host may have no memory: the scope then stands without a context
    // and the command runs without a heap. Throws `long` 516 when inData has no basic suite.
    CommandScope(A_long selector, A_long pluginId, PF_InData* inData);
    ~CommandScope();
    CommandScope(const CommandScope&) = delete;
    CommandScope& operator=(const CommandScope&) = delete;

    CommandScope* older = nullptr;
    CommandScope* newer = nullptr;
    CommandContext* context = nullptr;
    A_long selector; // the command's number
};

// The newest scope, or null between two commands.
extern CommandScope* currentScope;

// The id under which the running command speaks to the host; stays behind when the command ends.
extern A_long currentPluginId;

// The input record and the suites of the newest scope; null when there is no scope, or when the
// scope has no context.
PF_InData* currentInData();
SuiteTable* currentSuites();
