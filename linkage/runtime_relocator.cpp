// Start-up code that mends references to variables of DLLs, which the linker turns down in this program
// (--disable-auto-import).
// NOLINTBEGIN(bugprone-reserved-identifier): the name to replace is that of MinGW
extern "C" void _pei386_runtime_relocator();
extern "C" void _pei386_runtime_relocator() {}
// NOLINTEND(bugprone-reserved-identifier)
