// pbhost: renders pictures with the effect module and inspects kernels and graphs.

#include <CLI/CLI.hpp>
#include <cstdio>
#include <functional>
#include <future>
#include <iostream>
#include <memory>
#include <unistd.h>

#include <array>

#include "command/command_scope.h"
#include "hostkit/suites/basic_suite.h"
#include "pbhost/check/reports.h"
#include "pbhost/commands/camera_command.h"
#include "pbhost/commands/check_command.h"
#include "pbhost/commands/controls_command.h"
#include "pbhost/commands/info_command.h"
#include "pbhost/commands/live_command.h"
#include "pbhost/commands/model_command.h"
#include "pbhost/commands/prefs_command.h"
#include "pbhost/commands/render_command.h"
#include "pbhost/commands/render_options.h"
#include "pbhost/commands/submit_command.h"
#include "pbhost/commands/translate_command.h"
#include "pbhost/lsp/server.h"
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
    double timeout = 0;                         // seconds; 0: no limit
};

void writeOut(const std::string& text) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
        throw Failure(ExitCode::RenderFailed, "standard output could not be written");
}

CLI::Validator notNegative() {
    return CLI::Validator(CLI::NonNegativeNumber).description("");
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

void addTimeout(CLI::App& command, Job& job) {
    command
        .add_option("--timeout", job.timeout,
                    "Seconds after which the work is given up (default: no limit)")
        ->check(notNegative())
        ->type_name("SECONDS");
}

void addFindings(CLI::App& command, pbhost::FindingOptions& options) {
    command.add_flag("--strict", options.isStrict,
                     "Treat warnings about the kernel or graph as errors");
    command.add_flag("-q,--quiet", options.isQuiet, "Do not show warnings");
}

// Runs work(text) and returns the text; prints it even if the work throws a Failure.
template<class Work>
std::string printedAnyway(const Work& work) {
    std::string text;
    try {
        work(text);
        return text;
    } catch (const Failure&) {
        writeOut(text);
        throw;
    }
}

// Completes a command that shows something about a file.
template<class Request>
void addShow(CLI::App& command, Job& job, const std::shared_ptr<Request>& request,
             void (*show)(pbhost::Session&, const Request&, std::string&)) {
    command.add_option("file", request->file, "The kernel (.pbk) or graph (.pbg)")->required();
    addFindings(command, request->findings);
    addTimeout(command, job);
    const auto options = addSession(command);
    command.callback([&job, request, options, show] {
        job.subject = request->file;
        job.work = [request, options, show] {
            return printedAnyway([&](std::string& text) {
                pbhost::Session session(*options);
                show(session, *request, text);
                session.finish("");
            });
        };
    });
}

void addRender(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("render", "Apply kernels or graphs to pictures");
    auto request = std::make_shared<pbhost::RenderRequest>();
    pbhost::addRenderOptions(*command, *request);
    addTimeout(*command, job);
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
    command->add_flag("--json", request->asJson, "As one JSON object");
    command->add_flag("--all", request->all, "Hidden controls, too");
    addShow(*command, job, request, pbhost::showControls);
}

void addInfo(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("info", "Press the effect's options button");
    auto request = std::make_shared<pbhost::InfoRequest>();
    command->add_option("--export-log", request->exportFolder,
                        "Let the effect write its error log into this folder");
    addShow(*command, job, request, pbhost::info);
}

void addAbout(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("about", "Show the effect's information about OpenGL");
    addTimeout(*command, job);
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

void addCheck(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("check", "Find the faults of kernels and graphs");
    auto request = std::make_shared<pbhost::CheckCommandRequest>();
    std::vector<std::string> formats;
    for (const pbhost::ReportFormat& format : pbhost::reportFormats())
        formats.emplace_back(format.name);
    command->add_option("path", request->paths, "Files, and folders with all files below them")
        ->required();
    command->add_option("--format", request->format, "gcc, json, sarif, junit, github or gitlab")
        ->check(CLI::IsMember(formats).description(""))
        ->type_name("FORMAT")
        ->capture_default_str();
    command->add_option("--jobs", request->jobs,
                        "Processes at a time (default: the number of processors)");
    command->add_option("--timeout", request->timeout, "Seconds for each file; 0 for no limit")
        ->check(notNegative())
        ->type_name("SECONDS")
        ->capture_default_str();
    command->add_flag("--werror", request->isStrict, "Fail if there are warnings");
    command->add_flag("-q,--quiet", request->isQuiet, "Do not show warnings");
    command->callback([&job, request] {
        job.work = [request] {
            return printedAnyway([&](std::string& text) { pbhost::check(*request, text); });
        };
    });
}

void addLsp(CLI::App& app, Job& job) {
    auto* command = app.add_subcommand("lsp", "Serve an editor as a language server");
    auto timeout = std::make_shared<double>(30);
    command->add_option("--timeout", *timeout, "Seconds for each check; 0 for no limit")
        ->check(notNegative())
        ->type_name("SECONDS")
        ->capture_default_str();
    command->add_flag(
        "--stdio", [](std::int64_t) {}, "Use standard input and output, which is the only way");
    command->callback([&job, timeout] {
        job.work = [timeout] {
            pbhost::serveLanguage(STDIN_FILENO, STDOUT_FILENO, *timeout);
            return std::string();
        };
    });
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
    return isForked ? pbhost::runInChild(work, job.subject, job.folders, job.timeout) : work();
}

// Shows an example at the end of each command's help.
void addExamples(CLI::App& app) {
    constexpr std::array<std::pair<const char*, const char*>, 12> examples = {{
        {"render", "render examples/twirl.pbk -i examples/pictures/scene.png -o twirl.png"},
        {"live", "live examples/twirl.pbk -i examples/pictures/scene.png --open"},
        {"controls", "controls examples/blend.pbk"},
        {"info", "info examples/glow.pbg"},
        {"about", "about"},
        {"host", "host"},
        {"prefs", "prefs set rootFolder ~/kernels"},
        {"translate", "translate examples/glow.pbg --node rows --stage fragment"},
        {"model", "model examples/blur.pbk"},
        {"camera", "camera --type perspective --zoom 800 --rotation 0 20 0"},
        {"check", "check examples --format sarif > examples.sarif"},
        {"lsp", "lsp (an editor starts it; see docs/editors.md)"},
    }};
    for (const auto& [command, example] : examples)
        app.get_subcommand(command)->footer("Example: pbhost " + std::string(example));
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
    app.footer("Example: pbhost render examples/blur.pbk -i examples/pictures/scene.png -o "
               "blurred.png --set Radius=6\n"
               "Exit codes: 0 done, 1 render or write failed, 2 usage, 3 kernel or graph, 4 input "
               "picture, 5 crash or time limit, 129 hung up, 130 interrupted, 141 output closed, "
               "143 terminated.");
    app.set_version_flag("--version", "pbhost " PBHOST_VERSION);
    bool isInOneProcess = false;
    app.add_flag("--no-fork", isInOneProcess,
                 "Work in this process instead of a child process, for a debugger");
    Job job;
    for (const auto add : {addRender, addSubmit, addLive, addControls, addInfo, addAbout, addHost,
                           addPrefs, addTranslate, addModel, addCamera, addCheck, addLsp})
        add(app, job);
    addExamples(app);
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
