#include "cli/command_word.h"

#include <vector>

#include "ara/kelda/common/orxConfigParser/nearest_word.h"

namespace orx::orxmaint {
namespace {

// The option `name` of `level` or of a command above it (global options are accepted anywhere).
const CLI::Option* FindOption(const CLI::App* level, const std::string& name) {
    for (; level != nullptr; level = level->get_parent()) {
        if (const CLI::Option* option = level->get_option_no_throw(name)) {
            return option;
        }
    }
    return nullptr;
}

}  // namespace

std::string FindUnknownCommand(CLI::App& app, int argc, const char* const* argv) {
    CLI::App* level = &app;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "--") {
            break;
        }
        if (word.size() > 1 && word[0] == '-') {
            const CLI::Option* option = FindOption(level, word);
            if (word.find('=') == std::string::npos && option != nullptr &&
                option->get_items_expected_min() > 0) {
                ++i;  // its value
            }
            continue;
        }
        const auto commands = level->get_subcommands([](CLI::App*) { return true; });
        if (commands.empty()) {
            break;  // the command takes no further command; the parser judges the rest
        }
        std::vector<std::string> names;
        CLI::App* known = nullptr;
        for (CLI::App* command : commands) {
            names.push_back(command->get_name());
            if (command->check_name(word)) {
                known = command;
            }
        }
        if (known != nullptr) {
            level = known;
            continue;
        }
        const std::string where = level == &app ? "" : " of \"" + level->get_name() + "\"";
        const std::string nearest = ara::kelda::common::orxConfigParser::NearestWord(word, names);
        if (!nearest.empty()) {
            return "unknown command \"" + word + "\"" + where + "; did you mean \"" + nearest +
                   "\"?";
        }
        std::string list;
        for (const auto& name : names) {
            list += (list.empty() ? "" : ", ") + name;
        }
        return "unknown command \"" + word + "\"" + where + "; the commands are: " + list;
    }
    return "";
}

}  // namespace orx::orxmaint
