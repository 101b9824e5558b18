// The command-line companion: what a maker of an application does with the launcher.

#include <CLI/CLI.hpp>
#include <iostream>

#include "ryn/make_command.h"
#include "ryn/output.h"
#include "ryn/pack_command.h"
#include "ryn/program.h"

namespace ryn {

int runProgram(const std::vector<std::string>& arguments) {
  std::vector<const char*> words;
  for (const std::string& argument : arguments) words.push_back(argument.c_str());
  CLI::App program("Makes applications and VM packs for the Ryn launcher", "ryn");
  program.set_version_flag("--version", "ryn " RYN_VERSION);
  program.require_subcommand(1);
  program.footer("Example: ryn make --help\n\nExit codes: 0 good, 1 refused, 2 usage or unreadable input.");
  addMakeCommand(program);
  addPackCommand(program);
  try {
    program.parse(static_cast<int>(words.size()), words.data());
    std::cout.flush();
    if (!std::cout) throw CommandError(kUsage, "cannot write to standard output");
    return kGood;
  } catch (const CLI::ParseError& error) {
    // Help and version come this way, too, as a success.
    return program.exit(error) == 0 ? kGood : kUsage;
  } catch (const CommandError& error) {
    std::cerr << "ryn: " << error.what() << "\n";
    return error.code;
  } catch (const std::exception& error) {
    std::cerr << "ryn: " << error.what() << "\n";
    return kUsage;
  }
}

}  // namespace ryn
