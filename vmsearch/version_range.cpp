#include "vmsearch/version_range.h"

#include <string>
#include <vector>

#include "text/text.h"

namespace ryn {
namespace {

using Numbers = VersionRange::Numbers;

constexpr int kGreatest = UINT16_MAX;
constexpr size_t kMostDigits = 5;

bool isNumber(std::wstring_view text) {
  return !text.empty() && text.size() <= kMostDigits && text.find_first_not_of(L"0123456789") == text.npos;
}

// What is not written is `rest`.
std::optional<Numbers> parseVersion(std::wstring_view text, int rest) {
  std::vector<std::wstring> pieces = split(replaceAll(text, L"_", L"."), L'.');
  // "1.8" is generation 8.
  if (pieces.size() > 1 && pieces.front() == L"1") pieces.erase(pieces.begin());
  if (pieces.size() > 3) return std::nullopt;
  int numbers[3] = {rest, rest, rest};
  for (size_t i = 0; i < pieces.size(); ++i) {
    if (!isNumber(pieces[i])) return std::nullopt;
    numbers[i] = parseInteger(pieces[i]);
  }
  return Numbers{numbers[0], numbers[1], numbers[2]};
}

Numbers numbersOf(const VmCandidate& vm) {
  const auto number = [](int16_t component) { return static_cast<int>(static_cast<uint16_t>(component)); };
  Numbers numbers{number(vm.version.generation()), number(vm.version.minor()), number(vm.version.micro())};
  // The executables of these generations carry ten times their update number; the registry does not.
  const bool inTenths = !vm.executable.empty() && numbers.generation >= 5 && numbers.generation <= 8;
  if (inTenths) numbers.micro /= 10;
  return numbers;
}

}  // namespace

std::optional<VersionRange> parseVersionRange(std::wstring_view token) {
  const bool open = token.ends_with(L'+');
  if (open) token.remove_suffix(1);
  const size_t dash = open ? token.npos : token.find(L'-');
  const auto least = parseVersion(token.substr(0, dash), 0);
  const auto greatest = open ? std::optional(Numbers{kGreatest, kGreatest, kGreatest})
                             : parseVersion(dash == token.npos ? token : token.substr(dash + 1), kGreatest);
  if (!least || !greatest) return std::nullopt;
  return VersionRange{*least, *greatest};
}

bool fitsRange(const VmCandidate& vm, const VersionRange& range) {
  const Numbers numbers = numbersOf(vm);
  return vm.version != VmVersion() && range.least <= numbers && numbers <= range.greatest;
}

}  // namespace ryn
