#include "pbhost/commands/submit_command.h"

#include <algorithm>
#include <memory>

#include "pbhost/commands/render_options.h"
#include "pbhost/farm/slurm.h"
#include "pbhost/process/failure.h"

namespace pbhost {

namespace {

using AddOptions = std::function<void(CLI::App&)>;

// Parses "render ...".
void parseRender(const std::vector<std::string>& words, const AddOptions& addSessionOptions,
                 FarmRequest& farm) {
    if (words.empty() || words.front() != "render")
        throw Failure(ExitCode::Usage, "write the command after the options: pbhost submit slurm "
                                       "render glow.pbk -i in.####.png -o out.####.png");
    farm.arguments.assign(words.begin() + 1, words.end());
    CLI::App command("", "render");
    addRenderOptions(command, farm.render);
    addSessionOptions(command);
    try {
        // The parser takes the words from the end.
        std::vector<std::string> reversed(farm.arguments.rbegin(), farm.arguments.rend());
        command.parse(reversed);
    } catch (const CLI::ParseError& error) {
        throw Failure(ExitCode::Usage, error.what());
    }
}

CLI::App& addFarm(CLI::App& submit, const char* name, const char* help, FarmRequest& request) {
    CLI::App& command = *submit.add_subcommand(name, help);
    command.prefix_command();
    command.add_option("--chunk", request.chunk, "Frames of a task")->capture_default_str();
    return command;
}

void addSlurmOptions(CLI::App& command, SlurmRequest& request) {
    command.add_option("--partition", request.partition, "The partition of the farm");
    command.add_option("--gres", request.gres, "Resources of a task, such as gpu:1");
    command
        .add_option("--sbatch", request.sbatchOptions,
                    "An option for the program sbatch, such as --sbatch=--mem=8G")
        ->allow_extra_args(false);
    command
        .add_option("--retries", request.retries,
                    "How often a task starts again when its program crashes or is killed")
        ->check(CLI::Range(0, 100))
        ->capture_default_str();
    command.add_flag("--wait", request.waits,
                     "Wait for the job, and end with the first exit code that is not 0");
    command.add_option("--status", request.status, "Show the state of this job");
}

} // namespace

void addSubmit(CLI::App& app, const AddOptions& addSessionOptions,
               const std::function<void(std::function<std::string()>)>& setWork) {
    CLI::App& submit = *app.add_subcommand("submit", "Render a sequence on a farm");
    submit.require_subcommand(1);
    auto slurm = std::make_shared<SlurmRequest>();
    CLI::App& toSlurm =
        addFarm(submit, "slurm", "Submit a job to Slurm, and print its number", slurm->farm);
    addSlurmOptions(toSlurm, *slurm);
    toSlurm.callback([&toSlurm, slurm, addSessionOptions, setWork] {
        if (slurm->status.empty())
            parseRender(toSlurm.remaining(), addSessionOptions, slurm->farm);
        setWork([slurm] { return submitToSlurm(*slurm); });
    });
    auto printed = std::make_shared<FarmRequest>();
    CLI::App& print = addFarm(
        submit, "print", "Print the commands of the tasks, one a line, for other queues", *printed);
    print.callback([&print, printed, addSessionOptions, setWork] {
        parseRender(print.remaining(), addSessionOptions, *printed);
        setWork([printed] { return printCommands(*printed); });
    });
}

} // namespace pbhost
