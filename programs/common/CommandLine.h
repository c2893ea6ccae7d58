/// What the tools' command lines have in common: plain help, --version, and one line for what is wrong.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

namespace common {

/// Gives the program a help text in ordinary words and the option --version. Call it before options are
/// added.
void PrepareCommandLine(CLI::App& app);

/// Prints what an exception of the parser asks for: the help or the version on standard output, or one line
/// about the mistake on standard error. The exit status. `nothing` is what to say when no input was given.
int EndOfParsing(const CLI::App& app, const CLI::ParseError& error, const std::string& nothing = "");

/// A mistake in the parser's words, in those of a user: "unknown option --modle (did you mean --model?)".
std::string InPlainWords(const CLI::App& app, const CLI::ParseError& error, const std::string& nothing);

/// Turns one of these names into its number, for the transform of an option.
CLI::Validator OneOf(std::vector<std::pair<std::string, int>> names);

}  // namespace common
