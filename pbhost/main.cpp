// pbhost: renders pictures with the effect module and inspects kernels and graphs.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <future>
#include <iostream>
#include <memory>

#include "command/command_scope.h"
#include "hostkit/suites/basic_suite.h"
#include "pbhost/commands/camera_command.h"
#include "pbhost/commands/controls_command.h"
#include "pbhost/commands/info_command.h"
#include "pbhost/commands/live_command.h"
#include "pbhost/commands/model_command.h"
#include "pbhost/commands/prefs_command.h"
#include "pbhost/commands/render_command.h"
#include "pbhost/commands/render_options.h"
#include "pbhost/commands/submit_command.h"
#include "pbhost/commands/translate_command.h"
#include "pbhost/process/child_process.h"
#include "pbhost/process/failure.h"
#include "pbhost/process/large_blocks.h"
#include "pbhost/process/temporary_files.h"

namespace {

using pbhost::ExitCode;
using pbhost::Failure;

// The command chosen on the command line.
struct Job {
    std::function<std::string()> work;          // returns the text to print
    std::vector<std::filesystem::path> folders; // output folders, where temporary files may remain
    std::string subject;                        // the input file's name, for messages
};

void writeOut(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure(ExitCode::RenderFailed, "standard output could not be written");
}

void addPreferences(CLI::App& command, std::string& file) {
    command.add_option("--prefs", file, "Preferences file (default: the user's own)");
}

std::shared_ptr<pbhost::SessionOptions> addSession(CLI::App& command) {
    auto options = std::make_shared<pbhost::SessionOptions>();
    command.add_option("--module", options->module,
                       "The effect module (default: the environment variable TVELMARONDINE_MODULE, "
                       "or the module beside the program)");
    addPreferences(command, options->preferences);
    command
        .add_option("--answer", options->answers,
                    "Answer to the effect's next dialog: yes, no or a path; empty cancels "
                    "(default: ask on the terminal)")
        ->allow_extra_args(false);
    command.add_flag("--verbose", options->isVerbose, "Show all messages and faults of the module");
    return options;
}

void addStrict(CLI::App& command, bool& isStrict) {
    command.add_flag("--strict", isStrict,
                     "Treat warnings about a graph as errors: connections without effect, "
                     "unconnected inputs");
}

void addRender(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("render", "Apply kernels or graphs to pictures");
    auto request = std::make_shared<pbhost::RenderRequest>();
    pbhost::addRenderOptions(*command, *request);
    const auto options = addSession(*command);
    command->callback([&job, request, options] {
        job.folders = pbhost::outputFolders(*request);
        job.subject = request->files.empty() ? request->project : request->files.front();
        job.work = [request, options] { return pbhost::render(*request, *options); };
    });
}

void addSubmit(CLI::App& app, Job& job) {
    pbhost::addSubmit(
        app, [](CLI::App& command) { addSession(command); },
        [&job](std::function<std::string()> work) { job.work = std::move(work); });
}

void addLive(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("live", "Show the controls and the picture in a browser");
    auto request = std::make_shared<pbhost::live::LiveRequest>();
    pbhost::addLiveOptions(*command, *request);
    const auto options = addSession(*command);
    command->callback([&job, request, options] {
        job.subject = request->file;
        job.work = [request, options] {
            pbhost::serveLive(*request, *options);
            return std::string();
        };
    });
}

void addControls(CLI::App& app, Job& job) {
    auto* command =
        app.add_subcommand("controls", "Show the effect's controls for a kernel or graph");
    auto request = std::make_shared<pbhost::ControlsRequest>();
    command->add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    command->add_flag("--json", request->asJson, "As one JSON object");
    command->add_flag("--all", request->all, "Hidden controls, too");
    addStrict(*command, request->isStrict);
    const auto options = addSession(*command);
    command->callback([&job, request, options] {
        job.subject = request->file;
        job.work = [request, options] {
            pbhost::Session session(*options);
            return session.finish(pbhost::showControls(session, *request));
        };
    });
}

void addInfo(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("info", "Press the effect's options button");
    auto request = std::make_shared<pbhost::InfoRequest>();
    command->add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    command->add_option("--export-log", request->exportFolder,
                        "Let the effect write its error log into this folder");
    addStrict(*command, request->isStrict);
    const auto options = addSession(*command);
    command->callback([&job, request, options] {
        job.subject = request->file;
        job.work = [request, options] {
            std::string text;
            try {
                pbhost::Session session(*options);
                pbhost::info(session, *request, text);
                return session.finish(text);
            } catch (const Failure&) {
                writeOut(text);
                throw;
            }
        };
    });
}

void addAbout(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("about", "Show the effect's information about OpenGL");
    const auto options = addSession(*command);
    command->callback([&job, options] {
        job.work = [options] {
            pbhost::Session session(*options);
            return session.finish(pbhost::about(session));
        };
    });
}

void addHost(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("host", "List the suites of the substitute host");
    command->callback([&job] {
        job.work = [] {
            const hostkit::Host host;
            std::string text;
            for (const auto& [name, version] : hostkit::suites::offered())
                text.append(name + " " + std::to_string(version) + "\n");
            return text;
        };
    });
}

// Adds one command of `prefs` with its arguments. All share the request, because --prefs may also
// precede the command.
void addPref(CLI::App& prefs, Job& job, const std::shared_ptr<pbhost::PrefsRequest>& request,
             const char* name, const char* help, const std::vector<const char*>& texts,
             const std::function<std::string(const pbhost::PrefsRequest&)>& work) {
    auto* command = prefs.add_subcommand(name, help);
    for (const char* text : texts)
        command->add_option(text, *text == 'K' ? request->key : request->value)->required();
    if (!texts.empty())
        command->add_option("--section", request->section, "The section of the preferences")
            ->capture_default_str();
    addPreferences(*command, request->file);
    command->callback(
        [&job, request, work] { job.work = [request, work] { return work(*request); }; });
}

void addPrefs(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("prefs", "Show or change the host's preferences");
    auto request = std::make_shared<pbhost::PrefsRequest>();
    addPreferences(*command, request->file);
    command->require_subcommand(0, 1);
    addPref(*command, job, request, "list", "Show all preferences", {}, pbhost::listPrefs);
    addPref(*command, job, request, "get", "Show one value", {"KEY"}, pbhost::getPref);
    addPref(*command, job, request, "set", "Set a value; rootFolder is searched for moved files",
            {"KEY", "VALUE"}, [](const pbhost::PrefsRequest& chosen) {
                pbhost::setPref(chosen);
                return std::string();
            });
    addPref(*command, job, request, "unset", "Remove a value", {"KEY"},
            [](const pbhost::PrefsRequest& chosen) {
                pbhost::unsetPref(chosen);
                return std::string();
            });
    command->callback([&job, command, request] {
        if (command->get_subcommands().empty())
            job.work = [request] { return pbhost::listPrefs(*request); };
    });
}

void addTranslate(CLI::App& app, Job& job) {
    auto* command =
        app.add_subcommand("translate", "Show the GLSL programs generated for a kernel or node");
    auto request = std::make_shared<pbhost::TranslateRequest>();
    request->order = 18;
    command->add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    command->add_option("--node", request->node, "The id of a graph's node");
    command
        ->add_option("--stage", request->stage,
                     "Print only this shader, without line numbers: vertex or fragment")
        ->check(CLI::IsMember({"vertex", "fragment"}));
    command
        ->add_option("--order", request->order,
                     "Index of the channel order of the textures, 0 to 23; 18 is alpha, "
                     "red, green, blue")
        ->capture_default_str()
        ->check(CLI::Range(0, 23));
    command->callback(
        [&job, request] { job.work = [request] { return pbhost::translate(*request); }; });
}

void addModel(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("model", "Print the model of a kernel or graph as JSON");
    auto file = std::make_shared<std::string>();
    command->add_option("file", *file, "The kernel (.pbk) or graph (.pbg)")->required();
    command->callback([&job, file] { job.work = [file] { return pbhost::modelAsJson(*file); }; });
}

void addCamera(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("camera", "Show the projection of a composition's camera");
    auto request = std::make_shared<pbhost::CameraRequest>();
    command->add_option("--module", request->module, "The effect module, as for render");
    command->add_option("--width", request->width, "Width of the composition")
        ->capture_default_str();
    command->add_option("--height", request->height, "Height of the composition")
        ->capture_default_str();
    command->add_option("--pixel-aspect", request->pixelAspect, "Width of a pixel over its height")
        ->capture_default_str();
    command->add_option("--type", request->kind, "default, perspective or orthographic")
        ->transform(CLI::CheckedTransformer(pbhost::cameraKinds));
    command->add_option(
        "--zoom", request->zoom,
        "Distance from the eye to the image plane in pixels (default: a 50 mm lens)");
    command->add_option(
        "--position", request->position,
        "X Y Z of the eye (default: in front of the centre, at the zoom's distance)");
    command->add_option("--rotation", request->rotation, "Degrees about X Y Z");
    command->add_flag("--json", request->isJson, "As one JSON object");
    command->callback(
        [&job, request] { job.work = [request] { return pbhost::cameraProjection(*request); }; });
}

// Runs the job in a child process, or in this one for a debugger.
int runJob(const Job& job, bool isForked) {
    const auto work = [&job] {
        pbhost::keepLargeBlocks();
        writeOut(job.work());
        return 0;
    };
    return isForked ? pbhost::runInChild(work, job.subject, job.folders) : work();
}

constexpr const char* helpHint = "See pbhost --help and pbhost COMMAND --help\n";

void requireCommand(const CLI::App& app, int argc, char** argv) {
    const auto isMeant = [&](const CLI::App* command) { return command->get_name() == argv[1]; };
    if (argc > 1 && *argv[1] != '-' && app.get_subcommands(isMeant).empty())
        throw Failure(ExitCode::Usage,
                      "unknown command '" + std::string(argv[1]) + "'\n" + helpHint);
}

int run(int argc, char** argv) {
    CLI::App app("Applies Pixel Bender kernels and graphs to pictures.", "pbhost");
    app.require_subcommand(0, 1); // without a command, the help text is printed
    app.footer("Example: pbhost render blur.pbk -i photo.png -o blurred.png --set Radius=6\n"
               "Exit codes: 0 done, 1 render or write failed, 2 usage, 3 kernel or graph, 4 input "
               "picture, 5 crash, 130 interrupted.");
    app.set_version_flag("--version", "pbhost " PBHOST_VERSION);
    bool isInOneProcess = false;
    app.add_flag("--no-fork", isInOneProcess,
                 "Work in this process instead of a child process, for a debugger");
    Job job;
    for (const auto add : {addRender, addSubmit, addLive, addControls, addInfo, addAbout, addHost,
                           addPrefs, addTranslate, addModel, addCamera})
        add(app, job);
    requireCommand(app, argc, argv);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& success) { // --help or --version
        return app.exit(success);
    } catch (const CLI::ParseError& error) {
        throw Failure(ExitCode::Usage, std::string(error.what()) + "\n" + helpHint);
    }
    if (job.work)
        return runJob(job, !isInOneProcess);
    std::cerr << app.help();
    return static_cast<int>(ExitCode::Usage);
}

} // namespace

int main(int argc, char** argv) {
    return pbhost::exitCodeOf([=] { return run(argc, argv); });
}
