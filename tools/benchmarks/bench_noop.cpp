// A VM that does nothing, so that what is left is the cost of starting it. No launcher ends with this code of
// its own accord: who sees it knows that the VM ran.
int main() {
  return 42;
}
