// The frame of a running command. While a CommandScope exists, all code can access the command's
// input record and its table of suites, and through them the host's heap.
//
// The entry point creates a scope on its stack before it dispatches the command and destroys it
// last. A command that the host sends while another one runs has its own scope; currentScope is the
// newest. One thread only.
#pragma once

#include "command/suite_table.h"
#include "sdk/pf_types.h"

// What a running command owns; stored in its own locked host handle.
struct CommandContext {
    PF_Handle handle; // the handle that holds this record
    PF_InData* inData;
    SuiteTable suites;
};

class CommandScope {
public:
    // If inData is null or the host has no memory, the scope has no context, and the command runs
    // without a heap. Throws `long` 516 if inData has no basic suite.
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

// The input record and the suites of the newest scope; null if there is no scope, or if it has no
// context.
PF_InData* currentInData();
SuiteTable* currentSuites();
