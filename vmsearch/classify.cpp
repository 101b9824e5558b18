#include "vmsearch/classify.h"

#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/registry_locations.h"

namespace ryn {
namespace {

// The Microsoft VM has one version for the list's rules; its builds are told apart at launch.
constexpr VmVersion kMicrosoftVmVersion(1, 4, 0);

bool isOldRuntime(const std::wstring& lowerName) {
  return lowerName == L"jre.exe" || lowerName == L"jrew.exe";
}

bool isMicrosoftVm(const std::wstring& lowerName) {
  return lowerName == L"jview.exe" || lowerName == L"wjview.exe";
}

int16_t component(uint16_t word) {
  return static_cast<int16_t>(word);
}

bool existsAny(const std::wstring& folder, std::initializer_list<const wchar_t*> suffixes,
               const VmProbe& probe) {
  for (const wchar_t* suffix : suffixes) {
    if (probe.exists(folder + suffix)) return true;
  }
  return false;
}

// Before VMs carried versions of their own, each generation brought files that the one before lacked.
VmVersion versionFromLayout(const std::wstring& folder, const std::wstring& lowerName, VmKind kind,
                            const VmProbe& probe) {
  VmVersion version;
  if (existsAny(folder, {L"\\pack200.exe"}, probe)) {
    version = VmVersion(5, 0, 0);
  } else if (existsAny(folder,
                       {L"\\client", L"\\..\\jre\\bin\\client", L"\\server", L"\\..\\jre\\bin\\server"},
                       probe)) {
    version = VmVersion(4, 0, 0);
  } else if (existsAny(folder, {L"\\hotspot", L"\\..\\jre\\bin\\hotspot"}, probe)) {
    version = VmVersion(3, 0, 0);
  } else if (existsAny(folder, {L"\\classic"}, probe)) {
    version = VmVersion(2, 0, 0);
  } else if (isOldRuntime(lowerName) || existsAny(folder, {L"\\jre.exe", L"\\jrew.exe"}, probe)) {
    return VmVersion(1, 0, 0);
  } else {
    return VmVersion();
  }

  // The browser plug-in of the same installation is more exact.
  const std::wstring runtime = kind == VmKind::kJre ? folder : folder + L"\\..\\jre\\bin";
  const std::wstring plugin = runtime + L"\\NPJava32.dll";
  const auto product = probe.versionResource(plugin).productVersion;
  if (!product) return version;
  const auto [a, b, c, d] = *product;
  return VmVersion(component(b), component(c), static_cast<int16_t>(b >= 4 ? d / 10 : component(d)));
}

// Version text of the runtime that the registry calls the current one; "0.0.0.0" when it names none.
std::wstring registeredRuntimeVersion(const VmProbe& probe) {
  const std::wstring key = kJavaRuntimeEnvironmentKey;
  const auto current = probe.registryText(key, RegistryView::kNative, kCurrentVersionValue);
  if (!current) return L"0.0.0.0";
  const auto micro = probe.registryText(joinPath(key, *current), RegistryView::kNative, kMicroVersionValue);
  return micro ? concat({*current, L".", *micro, L"_0"}) : L"0.0.0.0";
}

}  // namespace

VmKind kindOfExecutable(const std::wstring& path, const VmProbe& probe) {
  const std::wstring name = lowerCase(fileName(path));
  if (isMicrosoftVm(name)) return VmKind::kMsj;
  if (isOldRuntime(name)) return VmKind::kJre;
  return probe.exists(folderPart(path) + L"\\javac.exe") ? VmKind::kJdk : VmKind::kJre;
}

VmVersion versionOfExecutable(const std::wstring& path, VmKind kind, const VersionResource& resource,
                              const VmProbe& probe) {
  if (resource.productVersion) {
    const auto [a, b, c, d] = *resource.productVersion;
    return a != 1 ? VmVersion(component(a), component(b), component(c))
                  : VmVersion(component(b), component(c), component(d));
  }
  const std::wstring folder = folderPart(path);
  const std::wstring folderName = lowerCase(fileName(folder));
  if (folderName == L"system32" || folderName == L"syswow64") {
    return parseVmVersion(registeredRuntimeVersion(probe));
  }
  return versionFromLayout(folder, lowerCase(fileName(path)), kind, probe);
}

VmCandidate classifyExecutable(const std::wstring& path, const VmProbe& probe) {
  VmCandidate candidate;
  candidate.executable = path;
  candidate.folder = folderPart(path);
  candidate.kind = kindOfExecutable(path, probe);
  candidate.bitnessClass = probe.underWow64() && probe.imageBitness(path) == ImageBitness::k64 ? 1 : 0;
  if (candidate.kind == VmKind::kMsj) {
    candidate.vendor = L"Microsoft";
    candidate.version = kMicrosoftVmVersion;
    return candidate;
  }
  const VersionResource resource = probe.versionResource(path);
  candidate.vendor = lowerCase(resource.companyName).find(L"ibm") == std::wstring::npos ? L"Sun" : L"IBM";
  candidate.version = versionOfExecutable(path, candidate.kind, resource, probe);
  return candidate;
}

VmCandidate classifyNamedExecutable(const std::wstring& path, const VmProbe& probe) {
  VmCandidate candidate = classifyExecutable(path, probe);
  // The Microsoft VM's programs lie in its folder itself.
  const bool inBin = candidate.kind != VmKind::kMsj && equalIgnoringCase(fileName(candidate.folder), L"bin");
  if (inBin) candidate.folder = folderPart(candidate.folder);
  return candidate;
}

}  // namespace ryn
