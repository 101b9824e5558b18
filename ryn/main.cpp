// The command-line companion: what a maker of an application does with the launcher.

#include <CLI/CLI.hpp>
#include <iostream>

#include "ryn/check_command.h"
#include "ryn/explain_command.h"
#include "ryn/machine.h"
#include "ryn/make_command.h"
#include "ryn/output.h"
#include "ryn/pack_command.h"
#include "ryn/program.h"
#include "text/text.h"

namespace ryn {
namespace {

/// For somebody who knows no command line: the report, and a window that stays until it was read.
int tellSupport() {
  ExitCode ended = kGood;
  try {
    std::cout << "The report about this application is\n\n    "
              << toUtf8(replaceAll(fromUtf8(textOf(writeSupportReport())), L"/", L"\\"))
              << "\n\nPlease send it to those who asked for it.\n";
  } catch (const std::exception& error) {
    std::cout << error.what() << "\n\nStart this program on a command line: ryn --help\n";
    ended = kUsage;
  }
  std::cout << "\nEnter closes this window. " << std::flush;
  std::cin.get();
  return ended;
}

}  // namespace

int runProgram(const std::vector<std::string>& arguments) {
  std::vector<const char*> words;
  for (const std::string& argument : arguments) words.push_back(argument.c_str());
  CLI::App program("Makes applications and VM packs for the Ryn launcher", "ryn");
  program.set_version_flag("--version", "ryn " RYN_VERSION);
  // The same command lines on all systems: "/" begins a path.
  program.allow_windows_style_options(false);
  program.require_subcommand(1);
  program.footer(
      "Example: ryn make --help\n\n"
      "Exit codes: 0 good, 1 refused or a negative answer, 2 usage or unreadable input.");
  ExitCode ended = kGood;
  addCheckCommand(program, ended);
  addExplainCommand(program, ended);
  addMakeCommand(program, ended);
  addPackCommand(program, ended);
  if (arguments.size() <= 1) {
    if (hasOwnConsole()) return tellSupport();
    std::cerr << program.help();
    return kUsage;
  }
  try {
    program.parse(static_cast<int>(words.size()), words.data());
    std::cout.flush();
    if (!std::cout) throw CommandError(kUsage, "cannot write to standard output");
    return ended;
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
