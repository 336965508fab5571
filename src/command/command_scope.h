// The frame of a running command. While a CommandScope exists, any code can reach the command's
// input record and its table of suites, and through them the host's heap.
//
// The entry point makes a scope on its stack before it dispatches the command and destroys it last.
// A command that the host sends while another one runs pushes a scope of its own; currentScope is
// the newest. One thread only.
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
    // When inData is null or the host has no memory, the scope has no context, and the command runs
    // without a heap. Throws `long` 516 when inData has no basic suite.
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

// The plug-in id that the running command passes to the host; keeps its value when the command
// ends.
extern A_long currentPluginId;

// The input record and the suites of the newest scope; null when there is no scope, or when the
// scope has no context.
PF_InData* currentInData();
SuiteTable* currentSuites();
