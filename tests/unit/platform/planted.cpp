// A library that nobody may load by accident; its resources are what the tests read.
extern "C" __declspec(dllexport) int planted() {
  return 1;
}
