#include "fuzz/input.h"
#include "vmsearch/described_search.h"
#include "vmsearch/vm_description.h"

using namespace ryn;

// A description file.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const VmDescription description = VmDescription::parse(widenBytes(fuzz::bytesAsText(data, size)));
  bool any = false;
  for (const DescriptionKey& key : kDescriptionKeys) {
    if (key.text != nullptr) {
      const std::wstring& text = description.*key.text;
      fuzz::require(trim(text) == text && text.find(L'\n') == std::wstring::npos,
                    "a text is one trimmed line");
      any = any || !text.empty();
    }
    if (key.block != nullptr) {
      for (const std::wstring& line : description.*key.block) {
        fuzz::require(!line.empty() && trim(line) == line && line.find(kEndOfBlock) == std::wstring::npos,
                      "a block holds trimmed lines");
        any = true;
      }
    }
  }
  fuzz::require(any != description.empty(), "empty is what says nothing");
  fitsPlatform(description.platformHints);
  return 0;
}
