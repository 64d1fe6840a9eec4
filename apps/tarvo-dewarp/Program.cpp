#include "apps/tarvo-dewarp/Program.h"

#include "apps/tarvo-dewarp/OptionValues.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <exception>
#include <new>
#include <ostream>
#include <stdexcept>
#include <vector>

namespace tarvo::apps {
namespace {

constexpr int helpColumnWidth = 34;

/// Ties a value that begins with a dash to its option, as in --pan=-.5, so that it cannot pass for an option.
/// An empty value stands alone instead: behind an equals sign it would not count as one.
std::vector<std::string> tieValues(const CLI::App& command, std::span<const std::string> arguments) {
    std::vector<std::string> tied;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--") {
            tied.insert(tied.end(), arguments.begin() + static_cast<std::ptrdiff_t>(i), arguments.end());
            break;
        }
        if (argument.size() > 1 && argument[0] == '-' && argument[1] != '-' && argument != "-h" &&
            (argument[1] < '0' || argument[1] > '9')) {
            throw UsageError("\"" + argument + "\" is no option of this command and no value that it takes");
        }
        const std::string name = argument.substr(0, argument.find('='));
        const CLI::Option* const option =
            name.starts_with("--") ? command.get_option_no_throw(name) : nullptr;
        const bool takesValue = option != nullptr && option->get_items_expected_max() > 0;
        if (takesValue && argument == name + "=") {
            tied.insert(tied.end(), {name, ""});
        } else if (takesValue && argument == name && i + 1 < arguments.size() &&
                   arguments[i + 1].starts_with('-')) {
            tied.push_back(name + "=" + arguments[++i]);
        } else {
            tied.push_back(argument);
        }
    }
    return tied;
}

/// Success, provided that what was printed arrived.
int flushed(std::ostream& out) {
    if (!out.flush()) {
        throw std::runtime_error("the result cannot be printed");
    }
    return exitSuccess;
}

int run(const Program& description, std::span<const std::string> arguments, std::ostream& out,
        std::ostream& err) {
    const std::string name = description.name;
    CLI::App program(description.purpose, name);
    program.get_formatter()->column_width(helpColumnWidth);
    program.get_formatter()->label("SUBCOMMAND", "COMMAND");
    // A path may begin with a slash on Windows too.
    program.allow_windows_style_options(false);
    program.set_version_flag("--version", name + " 1.0");
    program.require_subcommand(1);
    program.footer("\"" + name +
                   " COMMAND --help\" tells more and gives an example.\n"
                   "Exit status: 0 done; 1 a file cannot be read or written; 2 wrong arguments.");
    const std::vector<Command> commands = description.addCommands(program);
    std::string names;
    for (const Command& command : commands) {
        command.arguments->group("Commands");
        const bool isLast = &command == &commands.back();
        names += (names.empty() ? "" : isLast ? " or " : ", ") + command.arguments->get_name();
    }
    std::vector<std::string> words(arguments.begin(), arguments.end());
    std::string help = name + " --help";
    const auto chosen = std::ranges::find_if(commands, [&](const Command& command) {
        return !words.empty() && words.front() == command.arguments->get_name();
    });
    if (chosen != commands.end()) {
        words = tieValues(*chosen->arguments, arguments);
        help = name + " " + words.front() + " --help";
    } else if (words.empty() || !words.front().starts_with('-')) {
        throw UsageError(
            (words.empty() ? "no command was given" : "\"" + words.front() + "\" is no command") + "; give " +
            names + ", or see " + help);
    }
    std::ranges::reverse(words); // as the library wants them
    try {
        program.parse(std::move(words));
    } catch (const CLI::Success& request) {
        program.exit(request, out, err); // prints the help or the version
        return flushed(out);
    } catch (const CLI::ParseError& error) {
        throw UsageError(std::string(error.what()) + "; see " + help);
    }
    for (const Command& command : commands) {
        if (command.arguments->parsed()) {
            command.carryOut(out);
        }
    }
    return flushed(out);
}

} // namespace

int runProgram(const Program& program, std::span<const std::string> arguments, std::ostream& out,
               std::ostream& err) {
    int status = exitFailure;
    try {
        return run(program, arguments, out, err);
    } catch (const QuietEnd& end) {
        status = end.status;
    } catch (const UsageError& error) {
        status = exitUsage;
        err << program.name << ": " << error.what() << '\n';
    } catch (const std::bad_alloc&) {
        err << program.name << ": there is not enough memory\n";
    } catch (const std::exception& error) {
        err << program.name << ": " << error.what() << '\n';
    } catch (...) {
        err << program.name << ": it failed for an unknown reason\n";
    }
    return status;
}

} // namespace tarvo::apps
