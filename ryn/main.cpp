// The command-line companion: what a maker of an application does with the launcher.

#include <CLI/CLI.hpp>
#include <iostream>

#include "ryn/make_command.h"
#include "ryn/output.h"
#include "ryn/pack_command.h"

int main(int argc, char** argv) {
  CLI::App program("Makes applications and VM packs for the Ryn launcher", "ryn");
  program.set_version_flag("--version", "ryn " RYN_VERSION);
  program.require_subcommand(1);
  program.footer("Example: ryn make --help\n\nExit codes: 0 good, 1 refused, 2 usage or unreadable input.");
  ryn::ExitCode ended = ryn::kGood;
  ryn::addMakeCommand(program, ended);
  ryn::addPackCommand(program);
  try {
    program.parse(argc, argv);
    std::cout.flush();
    if (!std::cout) throw ryn::CommandError(ryn::kUsage, "cannot write to standard output");
    return ended;
  } catch (const CLI::ParseError& error) {
    // Help and version come this way, too, as a success.
    return program.exit(error) == 0 ? ryn::kGood : ryn::kUsage;
  } catch (const ryn::CommandError& error) {
    std::cerr << "ryn: " << error.what() << "\n";
    return error.code;
  } catch (const std::exception& error) {
    std::cerr << "ryn: " << error.what() << "\n";
    return ryn::kUsage;
  }
}
