// What the command says of arguments that it does not understand.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class ParseError;
} // namespace CLI

namespace vorna::app {

// Refuses for all commands what no option can mean: empty values, the next option as the value of the one before it, values of
// those that take none, and one option twice.
void refuse_what_makes_no_sense(CLI::App& application);

// The arguments without the program's name as they are parsed: what follows -- are files, whatever their names begin with. Throws
// Usage_Error for the value of an option that takes it behind an equals sign only.
std::vector<std::string> prepared_arguments(const CLI::App& application, std::vector<std::string> arguments);

// What the parser has found, in one line: the option or argument, what was expected and what was found.
std::string usage_message(const CLI::App& application, const CLI::ParseError& error);

} // namespace vorna::app
