#include "command/command_scope.h"

#include <new>

CommandScope* currentScope = nullptr;
A_long currentPluginId = 0;

namespace {

CommandContext* makeContext(PF_InData* inData) {
    const PF_UtilCallbacks& utils = *inData->utils;
    PF_Handle handle = utils.host_new_handle(sizeof(CommandContext));
    if (handle == nullptr)
        return nullptr;
    void* memory = utils.host_lock_handle(handle);
    if (memory == nullptr) {
        utils.host_dispose_handle(handle);
        return nullptr;
    }
    try {
        return new (memory) CommandContext{handle, inData, SuiteTable(inData->pica_basicP)};
    } catch (...) {
        utils.host_dispose_handle(handle);
        throw;
    }
}

} // namespace

CommandScope::CommandScope(A_long commandSelector, A_long pluginId, PF_InData* inData)
    : selector(commandSelector) {
    currentPluginId = pluginId;
    if (inData != nullptr)
        context = makeContext(inData);
    older = currentScope;
    if (older != nullptr)
        older->newer = this;
    currentScope = this;
}

CommandScope::~CommandScope() {
    if (newer != nullptr)
        newer->older = older;
    else
        currentScope = older;
    if (older != nullptr)
        older->newer = newer;
    if (context == nullptr)
        return;
    PF_Handle handle = context->handle;
    const PF_InData* inData = context->inData;
    context->~CommandContext();
    inData->utils->host_dispose_handle(handle);
}

PF_InData* currentInData() {
    if (currentScope == nullptr || currentScope->context == nullptr)
        return nullptr;
    return currentScope->context->inData;
}

SuiteTable* currentSuites() {
    if (currentScope == nullptr || currentScope->context == nullptr)
        return nullptr;
    return &currentScope->context->suites;
}
