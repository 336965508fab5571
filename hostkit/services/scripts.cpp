#include "hostkit/services/scripts.h"

#include <duktape.h>

#include <exception>
#include <memory>
#include <utility>

#include "hostkit/services/text.h"

namespace hostkit {

namespace {

// JavaScript that defines the global functions. `ask` is the native function below; its first
// argument is the number of a Question::Kind.
constexpr const char* prelude = R"js(
(function (ask, global) {
    function text(value) { return value === undefined ? "" : String(value); }
    function entry(kind, chooser) {
        function Entry(path) {
            if (!(this instanceof Entry)) return new Entry(path);
            this.fsName = text(path);
        }
        Entry[chooser] = function (prompt, filter) {
            var path = ask(kind, "", text(prompt), text(filter), false);
            return path === null ? null : new Entry(path);
        };
        return Entry;
    }
    global.File = entry(2, "openDialog");
    global.Folder = entry(3, "selectDialog");
    global.alert = function (message, title, errorIcon) {
        ask(0, text(title), text(message), "", Boolean(errorIcon));
    };
    global.confirm = function (message, noAsDefault, title) {
        return ask(1, text(title), text(message), "", Boolean(noAsDefault)) === "yes";
    };
})
)js";

// State of one run of a script. The interpreter unwinds with longjmp, so functions that call it may
// have no objects with destructors; those are here.
struct Run {
    ScriptRunner* runner;
    std::string script; // CESU-8, as the interpreter requires; also `answer` and `failure`
    std::optional<std::string> answer;
    std::string failure; // message of an exception from ask
};

Run& runOf(duk_context* context) {
    duk_memory_functions functions;
    duk_get_memory_functions(context, &functions);
    return *static_cast<Run*>(functions.udata);
}

std::string takeText(duk_context* context, duk_idx_t index) {
    return fromCesu8(duk_get_string_default(context, index, ""));
}

// Calls ScriptRunner::ask; returns false if that throws. Does not call interpreter functions that
// may longjmp.
bool askRunner(duk_context* context) noexcept {
    Run& run = runOf(context);
    try {
        run.answer =
            run.runner->ask({static_cast<Question::Kind>(duk_get_int(context, 0)),
                             takeText(context, 1), takeText(context, 2), takeText(context, 3),
                             duk_get_boolean(context, 4) != 0, std::nullopt});
        if (run.answer)
            run.answer = toCesu8(*run.answer);
        return true;
    } catch (const std::exception& error) {
        run.failure = toCesu8(error.what());
        return false;
    }
}

duk_ret_t ask(duk_context* context) {
    if (!askRunner(context))
        return duk_generic_error(context, "%s", runOf(context).failure.c_str());
    if (runOf(context).answer)
        duk_push_string(context, runOf(context).answer->c_str());
    else
        duk_push_null(context);
    return 1;
}

// Pushes the value of the last expression as text.
duk_ret_t evaluate(duk_context* context, void* /*data*/) {
    duk_eval_string(context, prelude);
    duk_push_c_function(context, ask, 5);
    duk_push_global_object(context);
    duk_call(context, 2);
    duk_pop(context);
    const Run& run = runOf(context);
    duk_eval_lstring(context, run.script.data(), run.script.size());
    duk_to_string(context, -1);
    return 1;
}

} // namespace

ScriptResult ScriptRunner::run(const std::string& script) {
    Run run{this, toCesu8(script.c_str()), {}, {}}; // a zero byte ends the script
    const std::unique_ptr<duk_context, decltype(&duk_destroy_heap)> heap(
        duk_create_heap(nullptr, nullptr, nullptr, &run, nullptr), duk_destroy_heap);
    if (heap == nullptr)
        return {std::nullopt, "no memory for the script"};
    const bool isDone = duk_safe_call(heap.get(), evaluate, nullptr, 0, 1) == DUK_EXEC_SUCCESS;
    const std::string text = fromCesu8(duk_safe_to_string(heap.get(), -1));
    return isDone ? ScriptResult{text, ""} : ScriptResult{std::nullopt, text};
}

std::optional<std::string> ScriptRunner::ask(Question question) {
    const bool isAlert = question.kind == Question::Kind::Alert;
    std::optional<std::string> answer;
    if (!isAlert && !answers.empty()) {
        answer = std::move(answers.front());
        answers.pop_front();
    } else if (askUser) {
        answer = askUser(question);
    }
    if (!isAlert)
        question.answer = answer;
    asked_.push_back(question);
    return question.answer;
}

} // namespace hostkit
