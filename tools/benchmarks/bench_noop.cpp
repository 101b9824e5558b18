// A VM that does nothing, so that what is left is the cost of starting it.
int main() {
  return 0;
}
