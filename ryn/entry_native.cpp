#include "ryn/program.h"

int main(int argc, char** argv) {
  return ryn::runProgram({argv, argv + argc});
}
