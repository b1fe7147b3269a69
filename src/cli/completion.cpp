#include "cli/completion.h"

namespace vellum::cli {
namespace {

struct OptionWords {
  std::vector<std::string> names;    ///< with their dashes
  std::vector<std::string> choices;  ///< of its value; empty where it may be anything
  bool takesValue = false;
  std::string help;
};

struct CommandWords {
  std::string name, help;
  std::vector<OptionWords> options;
  std::vector<CommandWords> commands;  ///< below it
};

std::vector<std::string> split(const std::string& text, char parting) {
  std::vector<std::string> parts;
  for (std::size_t at = 0; at <= text.size();) {
    const std::size_t end = std::min(text.find(parting, at), text.size());
    if (end > at) parts.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

std::string joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text.append(text.empty() ? "" : between).append(word);
  return text;
}

/// The word list of `offer_words` is the name of a check that checks nothing.
constexpr std::string_view kOffered = "offered:";

std::vector<std::string> offered_words(const CLI::Option& option) {
  for (int i = 0;; ++i) {
    const CLI::Validator* check = nullptr;
    try {
      check = const_cast<CLI::Option&>(option).get_validator(i);  // there is none for what is constant
    } catch (const CLI::OptionNotFound&) {
      return {};
    }
    if (check->get_name().starts_with(kOffered)) return split(check->get_name().substr(kOffered.size()), '|');
  }
}

/// "ENUM:png|apng" names its words; those in capitals ("MS|N/D") stand for others.
std::vector<std::string> choices_of(const CLI::Option& option) {
  if (auto words = offered_words(option); !words.empty()) return words;
  const std::string type = option.get_type_name();
  const bool stands_for_others =
      std::ranges::any_of(type.substr(type.rfind(':') + 1), [](char c) { return c >= 'A' && c <= 'Z'; });
  if (option.get_items_expected_max() == 0 || type.find('|') == std::string::npos || stands_for_others)
    return {};
  return split(type.substr(type.rfind(':') + 1), '|');
}

CommandWords words_of(const CLI::App& app) {
  CommandWords words{app.get_name(), app.get_description(), {}, {}};
  for (const CLI::Option* option : app.get_options()) {
    const bool everywhere =
        app.get_parent() && option == app.get_help_ptr();  // the tool's own stands anywhere
    if (!option->nonpositional() || option->get_group().empty() || everywhere) continue;
    words.options.push_back({split(option->get_name(false, true), ','), choices_of(*option),
                             option->get_items_expected_max() > 0, option->get_description()});
  }
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; }))
    words.commands.push_back(words_of(*command));
  return words;
}

/// Calls `visit(place, options)` with the options of each command; the place of those that stand anywhere is
/// "*".
template <typename Visit>
void for_each_place(const CommandWords& tool, const Visit& visit) {
  for (const CommandWords& command : tool.commands) {
    std::vector<OptionWords> options = command.options;
    for (const CommandWords& below : command.commands)
      options.insert(options.end(), below.options.begin(), below.options.end());
    visit(command.name, options);
  }
  visit(std::string("*"), tool.options);
}

/// One text in single quotes.
std::string quoted(const std::string& text, const char* quote = "'\\''") {
  std::string result = "'";
  for (const char c : text)
    if (c == '\'')
      result += quote;
    else
      result += c;
  return result + "'";
}

std::vector<std::string> names_of(const std::vector<CommandWords>& commands) {
  std::vector<std::string> names;
  for (const CommandWords& command : commands) names.push_back(command.name);
  return names;
}

/// What bash and zsh have in common: branches of "$command,$before". `list` writes the words of a choice as
/// the shell takes them; `any` is what is done for values that may be anything.
template <typename List>
std::string value_branches(const CommandWords& tool, const char* any, const List& list) {
  std::string text;
  std::vector<std::string> free;
  for_each_place(tool, [&](const std::string& place, const std::vector<OptionWords>& options) {
    for (const OptionWords& option : options) {
      if (!option.takesValue) continue;
      std::vector<std::string> patterns;
      for (const std::string& name : option.names) patterns.push_back(place + "," + name);
      if (option.choices.empty())
        free.insert(free.end(), patterns.begin(), patterns.end());
      else
        text += "    " + joined(patterns, "|") + ") " + list(option.choices) + "; return ;;\n";
    }
  });
  return text + "    " + joined(free, "|") + ") " + any + " ;;\n";
}

// --- bash ---

std::string bash_text(const CommandWords& tool) {
  const std::string commands = joined(names_of(tool.commands), " ");
  std::string text = R"(# bash completion of vellum; made by the program itself.
_vellum() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= words= i
  [[ $word == '=' ]] && word=
  [[ $before == '=' ]] && before=${COMP_WORDS[COMP_CWORD-2]}
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
)";
  text +=
      "      " + joined(names_of(tool.commands), "|") + ") command=${COMP_WORDS[i]}; break ;;\n" + R"(    esac
  done
  COMPREPLY=()
  case $command,$before in
)";
  text += value_branches(tool, "return", [](const std::vector<std::string>& choices) {
    return "COMPREPLY=($(compgen -W " + quoted(joined(choices, " ")) + " -- \"$word\"))";
  });
  text += "  esac\n  case $command in\n    '') words=" + quoted(commands) + " ;;\n";
  std::string anywhere;
  for_each_place(tool, [&](const std::string& place, const std::vector<OptionWords>& options) {
    std::vector<std::string> names;
    for (const OptionWords& option : options)
      names.insert(names.end(), option.names.begin(), option.names.end());
    if (place == "*") {
      anywhere = joined(names, " ");
      return;
    }
    const auto at = std::ranges::find(tool.commands, place, &CommandWords::name);
    const auto below = names_of(at->commands);
    names.insert(names.end(), below.begin(), below.end());
    text += "    " + place + ") words=" + quoted(joined(names, " ")) + " ;;\n";
  });
  return text + "  esac\n  words+=" + quoted(" " + anywhere) + R"(
  [[ -z $command || $word == -* || $before == "$command" ]] && COMPREPLY=($(compgen -W "$words" -- "$word"))
  [[ $word == -* ]] || COMPREPLY=(${COMPREPLY[@]/#-*})
}
complete -o default -F _vellum vellum
)";
}

// --- zsh ---

/// 'name:help' for _describe.
std::string zsh_item(const std::string& name, const std::string& help) { return quoted(name + ":" + help); }

std::string zsh_text(const CommandWords& tool) {
  std::string text = R"(#compdef vellum
# zsh completion of vellum; made by the program itself.
_vellum() {
  local command= word before=${words[CURRENT-1]}
  local -a commands options values
  for word in ${words[2,CURRENT-1]}; do
    case $word in
)";
  text += "      " + joined(names_of(tool.commands), "|") + ") command=$word; break ;;\n" + R"(    esac
  done
  case $command,$before in
)";
  text += value_branches(tool, "_files; return", [](const std::vector<std::string>& choices) {
    std::vector<std::string> words;
    for (const std::string& choice : choices) words.push_back(quoted(choice));
    return "values=(" + joined(words, " ") + "); _describe value values";
  });
  text += "  esac\n  case $command in\n";
  const auto list_of = [](const std::vector<CommandWords>& commands) {
    std::string items;
    for (const CommandWords& command : commands) items += " " + zsh_item(command.name, command.help);
    return "commands=(" + items + ")";
  };
  text += "    '') " + list_of(tool.commands) + " ;;\n";
  std::string anywhere;
  for_each_place(tool, [&](const std::string& place, const std::vector<OptionWords>& options) {
    std::string items;
    for (const OptionWords& option : options)
      for (const std::string& name : option.names) items += " " + zsh_item(name, option.help);
    if (place == "*") {
      anywhere = items;
      return;
    }
    const auto at = std::ranges::find(tool.commands, place, &CommandWords::name);
    text += "    " + place + ") options=(" + items + "); " + list_of(at->commands) + " ;;\n";
  });
  return text + "  esac\n  options+=(" + anywhere + R"()
  if [[ $PREFIX == -* ]]; then
    _describe -o option options
  elif [[ ( -z $command || $before == $command ) && $#commands -gt 0 ]]; then
    _describe command commands
  else
    _files
  fi
}
_vellum "$@"
)";
}

// --- fish ---

std::string fish_option(const std::string& condition, const OptionWords& option) {
  std::string text = "complete -c vellum" + condition;
  for (const std::string& name : option.names)
    text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  if (!option.choices.empty())
    text += " -x -a " + quoted(joined(option.choices, " "), "\\'");
  else if (option.takesValue)
    text += " -r";
  return text + " -d " + quoted(option.help, "\\'") + "\n";
}

std::string fish_text(const CommandWords& tool) {
  std::string text = "# fish completion of vellum; made by the program itself.\n";
  const auto add_commands = [&text](const std::string& condition, const std::vector<CommandWords>& commands) {
    for (const CommandWords& command : commands)
      text += "complete -c vellum -f -n '" + condition + "' -a " + command.name + " -d " +
              quoted(command.help, "\\'") + "\n";
  };
  add_commands("__fish_use_subcommand", tool.commands);
  for (const CommandWords& command : tool.commands)
    if (!command.commands.empty())
      add_commands("__fish_seen_subcommand_from " + command.name + "; and not __fish_seen_subcommand_from " +
                       joined(names_of(command.commands), " "),
                   command.commands);
  for_each_place(tool, [&](const std::string& place, const std::vector<OptionWords>& options) {
    for (const OptionWords& option : options)
      text += fish_option(place == "*" ? "" : " -n '__fish_seen_subcommand_from " + place + "'", option);
  });
  return text;
}

}  // namespace

void offer_words(CLI::Option& option, const std::vector<std::string>& words) {
  option.check(CLI::Validator([](std::string&) { return std::string(); }, "",
                              std::string(kOffered) + joined(words, "|")));
}

std::string completion_text(const CLI::App& app, const std::string& shell) {
  static constexpr std::pair<const char*, std::string (*)(const CommandWords&)> kShells[] = {
      {"bash", bash_text}, {"zsh", zsh_text}, {"fish", fish_text}};
  for (const auto& [name, text] : kShells)
    if (shell == name) return text(words_of(app));
  return {};
}

}  // namespace vellum::cli
