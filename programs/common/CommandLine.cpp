/// What the tools' command lines have in common: plain help, --version, and one line for what is wrong.
#include "common/CommandLine.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <numeric>
#include <optional>
#include <set>

#include "common/ExitStatus.h"
#include "common/Messages.h"

namespace common {

namespace {

bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

/// What stands between two marks, or nothing.
std::optional<std::string> Between(const std::string& text, const std::string& before,
                                   const std::string& after) {
  const size_t start = text.find(before);
  if (start == std::string::npos) return {};
  const size_t from = start + before.size();
  const size_t end = after.empty() ? text.size() : text.find(after, from);
  if (end == std::string::npos) return {};
  return text.substr(from, end - from);
}

std::string Joined(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

/// In an order that does not change: the parser has none.
std::vector<std::string> Names(const std::set<CLI::Option*>& options) {
  std::vector<std::string> names;
  names.reserve(options.size());
  for (const CLI::Option* option : options) names.push_back(option->get_name());
  std::sort(names.begin(), names.end());
  return names;
}

/// Shows the kind of a value as one word, and ranges and defaults as a part of the description.
class PlainFormatter final : public CLI::Formatter {
 public:
  std::string make_option_opts(const CLI::Option* option) const override {
    if (option->get_type_name().empty()) return "";  // a flag
    const bool many = option->get_expected_max() == CLI::detail::expected_max_vector_size;
    const std::string rest = many ? " ..." : "";
    return option->get_positional() ? rest : " " + Kind(option->get_type_name()) + rest;
  }

  std::string make_option_desc(const CLI::Option* option) const override {
    std::vector<std::string> remarks;
    if (const auto range = Between(option->get_type_name(), " in [", "]")) {
      remarks.push_back(CLI::detail::find_and_replace(*range, " - ", " to "));
    }
    const std::string& description = option->get_description();
    if (!option->get_default_str().empty() && !Contains(description, "default")) {
      remarks.push_back("default: " + option->get_default_str());
    }
    for (const std::string& other : Names(option->get_needs())) remarks.push_back("with " + other);
    for (const std::string& other : Names(option->get_excludes())) remarks.push_back("not with " + other);
    if (remarks.empty()) return description;
    const std::string all = Joined(remarks, "; ") + ")";
    const bool hasRemark = Contains(description, "(default") && description.back() == ')';
    return hasRemark ? description.substr(0, description.size() - 1) + "; " + all : description + " (" + all;
  }

  /// A group of options.
  std::string make_expanded(const CLI::App* group) const override {
    std::string text = "\n" + group->get_group() + ":\n";
    for (const CLI::Option* option : group->get_options()) {
      if (option != group->get_help_ptr()) text += make_option(option, false);
    }
    return text;
  }

 private:
  static std::string Kind(const std::string& type) {
    const std::string name = type.substr(0, type.find_first_of(":{ "));
    if (name == "INT" || name == "UINT" || name == "FLOAT") return "NUMBER";
    return name == "ENUM" ? "NAME" : name;
  }
};

size_t EditDistance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t exchanged = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, exchanged});
    }
  }
  return row.back();
}

std::vector<std::string> NamesOf(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  for (const CLI::App* group : app.get_subcommands({})) {
    for (const std::string& name : NamesOf(*group)) names.push_back(name);
  }
  return names;
}

std::string UnknownArgument(const CLI::App& app) {
  const std::vector<std::string> extras = app.remaining(true);
  const std::string word = extras.empty() ? "" : extras.front().substr(0, extras.front().find('='));
  if (word.empty() || word[0] != '-') return "unexpected word '" + word + "'";
  constexpr size_t NEAR = 3;
  std::string nearest;
  size_t least = NEAR;
  for (const std::string& name : NamesOf(app)) {
    const size_t distance = EditDistance(word, name);
    if (distance < least) nearest = name;
    least = std::min(least, distance);
  }
  return "unknown option " + word + (nearest.empty() ? "" : " (did you mean " + nearest + "?)");
}

std::string WrongCount(const std::string& message) {
  const std::string option = message.substr(0, message.find(':'));
  return Contains(message, "At Most") ? option + " is given more than once" : option + " needs a value";
}

std::string Missing(const std::string& message, const std::string& nothing) {
  const auto choice = Between(message, "Exactly 1 option from [", "]");
  if (choice) return "give exactly one of " + CLI::detail::find_and_replace(*choice, ",", ", ");
  return nothing.empty() ? message : nothing;
}

/// What the parser says of values that are out of a range, or none of a few words.
std::string WrongValue(const std::string& message) {
  const std::string option = message.substr(0, message.find(':'));
  if (const auto value = Between(message, ": Value ", " not in range ")) {
    // Fractions come with six digits.
    const std::string range = *Between(message, " not in range ", "");
    const std::string limits = CLI::detail::find_and_replace(range, ".000000", "");
    return option + ": '" + *value + "' is not a number from " + limits;
  }
  const auto choice = Between(message, " not in {", "}");
  const auto value = Between(message, ": ", " not in {");
  if (choice && value) {
    return option + ": '" + *value + "' is not one of " + CLI::detail::find_and_replace(*choice, ",", ", ");
  }
  return message;
}

}  // namespace

void PrepareCommandLine(CLI::App& app) {
  auto formatter = std::make_shared<PlainFormatter>();
  formatter->label("OPTIONS", "options");
  app.formatter(formatter);
  app.set_help_flag("-h,--help", "print this help and exit");
  app.set_version_flag("--version", app.get_name() + " " VELMORA_VERSION, "print the version and exit");
}

std::string InPlainWords(const CLI::App& app, const CLI::ParseError& error, const std::string& nothing) {
  // Its name does not tell the kind of an error: some bear that of the program.
  std::string message = error.what();
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) return UnknownArgument(app);
  if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr) return WrongCount(message);
  if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr) return Missing(message, nothing);
  if (dynamic_cast<const CLI::ValidationError*>(&error) != nullptr) return WrongValue(message);
  if (dynamic_cast<const CLI::ExcludesError*>(&error) != nullptr) {
    return CLI::detail::find_and_replace(message, " excludes ", " does not go with ");
  }
  if (dynamic_cast<const CLI::RequiresError*>(&error) != nullptr) {
    return CLI::detail::find_and_replace(message, " requires ", " goes only with ");
  }
  const auto option = Between(message, "Could not convert: ", " = ");
  if (option)
    return *option + ": '" + *Between(message, " = ", "") + "' is not a whole number of reasonable size";
  return message;
}

int EndOfParsing(const CLI::App& app, const CLI::ParseError& error, const std::string& nothing) {
  if (dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr) {
    std::cout << app.help();
    return SUCCESS;
  }
  if (dynamic_cast<const CLI::CallForVersion*>(&error) != nullptr) {
    std::cout << error.what() << std::endl;
    return SUCCESS;
  }
  PrintError(std::cerr, InPlainWords(app, error, nothing) + ". See " + app.get_name() + " --help.");
  return UNUSABLE;
}

CLI::Validator OneOf(std::vector<std::pair<std::string, int>> names) {
  const auto replace = [names = std::move(names)](std::string& word) -> std::string {
    std::vector<std::string> known;
    for (const auto& [name, number] : names) {
      if (name == word) {
        word = std::to_string(number);
        return "";
      }
      known.push_back(name);
    }
    return "'" + word + "' is not one of " + Joined(known, ", ");
  };
  return CLI::Validator(replace, "", "name");
}

}  // namespace common
