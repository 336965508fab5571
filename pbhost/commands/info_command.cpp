#include "pbhost/commands/info_command.h"

#include <iostream>

#include "pbhost/files/printable.h"
#include "pbhost/process/failure.h"
#include "pbhost/session/scene.h"
#include "support/outcome_texts.h"

namespace pbhost {

namespace {

// Collects the texts of the effect's alerts for the program's output; passes all other dialogs on.
class AlertCollector {
public:
    explicit AlertCollector(Session& owner) : session_(owner) {
        session_.host.scripts.askUser = [this](const hostkit::Question& question) {
            const bool isAlert = question.kind == hostkit::Question::Kind::Alert;
            if (!isAlert || question.title != informationTitle)
                return session_.dialogs.answer(question);
            text = question.message;
            return std::optional<std::string>();
        };
    }
    ~AlertCollector() { session_.host.scripts.askUser = nullptr; }
    AlertCollector(const AlertCollector&) = delete;
    AlertCollector& operator=(const AlertCollector&) = delete;

    std::string text;

private:
    Session& session_;
};

bool wasAsked(const Session& session, const char* title) {
    for (const hostkit::Question& question : session.host.scripts.asked())
        if (question.title == title)
            return true;
    return false;
}

} // namespace

void info(Session& session, const InfoRequest& request, std::string& text) {
    Scene scene(session, transparentSource(16, 16, Depth::Bits8));
    scene.apply(request.file);
    AlertCollector alerts(session);
    if (!request.exportFolder.empty())
        session.dialogs.prepare({"yes", request.exportFolder});
    session.require(scene.effect.doDialog());
    if (wasAsked(session, exportFailedTitle))
        throw Failure(ExitCode::RenderFailed,
                      request.exportFolder + ": the error log could not be written");
    text = alerts.text + "\n";
    if (request.exportFolder.empty()) {
        scene.checkFile(request.findings);
        return;
    }
    for (const std::string& message : scene.messages)
        if (!message.empty())
            std::cerr << printable(message) << "\n";
    if (wasAsked(session, exportedTitle))
        std::cerr << "pbhost: note: the error log is in " << request.exportFolder << errorLogFile
                  << "\n";
    else
        std::cerr << "pbhost: note: there is no error log\n";
    scene.messages.clear(); // shown, and what they tell of is in the log
    scene.checkFile(request.findings);
}

std::string about(Session& session) {
    session.require(session.plugin->about());
    std::string text;
    for (const std::string& line : session.takeMessages())
        text.append(line).append("\n");
    return text;
}

} // namespace pbhost
