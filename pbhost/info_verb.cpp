#include "pbhost/info_verb.h"

#include <iostream>

#include "pbhost/effect_file.h"
#include "pbhost/failure.h"
#include "pbhost/printable.h"
#include "pbhost/scene.h"

namespace pbhost {

namespace {

// Keeps the effect's own words for the program's output; all other dialogs go to the person.
class Listener {
public:
    explicit Listener(Session& owner) : session_(owner) {
        session_.host.scripts.person = [this](const hostkit::Question& question) {
            const bool isAlert = question.kind == hostkit::Question::Kind::Alert;
            if (!isAlert || question.title != "Pixel Bender Information")
                return session_.dialogs.answer(question);
            text = question.message;
            return std::optional<std::string>();
        };
    }
    ~Listener() { session_.host.scripts.person = nullptr; }
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

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

// The export empties the log, which else tells what does not compile.
void checkPrograms(Scene& scene, const std::string& file, bool isExported) {
    scene.checkPrograms();
    if (isExported && !isGraphFile(file))
        throw Failure(ExitCode::BadKernel, file + ": does not compile; the error log says why");
}

} // namespace

void info(Session& session, const InfoRequest& request, std::string& text) {
    Scene scene(session, transparentSource(16, 16, Depth::Bits8));
    scene.apply(request.file);
    Listener listener(session);
    if (!request.exportFolder.empty())
        session.dialogs.prepare({"yes", request.exportFolder});
    session.require(scene.effect.doDialog());
    if (wasAsked(session, "Log file has failed to export"))
        throw Failure(ExitCode::RenderFailed,
                      request.exportFolder + ": the error log could not be written there");
    text = listener.text + "\n";
    const bool isExported = wasAsked(session, "Log file has exported ");
    if (request.exportFolder.empty())
        return checkPrograms(scene, request.file, isExported);
    for (const std::string& message : scene.messages)
        if (!message.empty())
            std::cerr << printable(message) << "\n";
    if (!isExported)
        std::cerr << "pbhost: note: there is no error log\n";
}

std::string about(Session& session) {
    session.require(session.plugin->about());
    std::string text;
    for (const std::string& line : session.takeMessages())
        text.append(line).append("\n");
    return text;
}

} // namespace pbhost
