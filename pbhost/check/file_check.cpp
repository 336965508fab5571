#include "pbhost/check/file_check.h"

#include "engine/pixels/channel_order.h"
#include "pbhost/files/effect_file.h"
#include "pbhost/lint/lint.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

Diagnostics findingsOf(const EffectFile& model, const ProgramCompiler& compiler,
                       const std::string& file) {
    const MappedFile mapped(model);
    DiagnosticList list(file, mapped.source);
    lintFile(mapped, list);
    for (std::size_t i = 0; i < mapped.count(); ++i)
        if (const auto program = mapped.program(i, hostSwizzle))
            for (const CompileFailure& log : compiler.compile(*program))
                addDriverMessages(list, *program, log, true);
    sortDiagnostics(list.found);
    return std::move(list.found);
}

Diagnostic unreadable(const std::string& file, std::string message) {
    Diagnostic found;
    found.rule = "unreadable";
    found.file = file;
    // The message begins with the file's name, which the finding has already.
    if (message.starts_with(file + ": "))
        message.erase(0, file.size() + 2);
    found.message = std::move(message);
    return found;
}

} // namespace

Diagnostics checkFile(hostkit::Host& host, const ProgramCompiler& compiler,
                      const CheckRequest& request) {
    try {
        return request.text ? findingsOf(EffectFile(host, request.file, *request.text), compiler,
                                         request.file)
                            : findingsOf(EffectFile(host, request.file), compiler, request.file);
    } catch (const Failure& failure) {
        return {unreadable(request.file, failure.what())};
    }
}

} // namespace pbhost
