#include <nlohmann/json.hpp>

#include "ryn/explain.h"
#include "ryn/output.h"
#include "text/text.h"
#include "vmsearch/vm_names.h"

namespace ryn {
namespace {

using nlohmann::ordered_json;

std::string utf8(std::wstring_view text) {
  return toUtf8(text);
}

// What a support desk can send on.
std::string wordsFor(VmOutcome outcome) {
  switch (outcome) {
    case VmOutcome::kNotReached:
      return "not reached: the choice was made before its turn";
    case VmOutcome::kChosen:
      return "chosen";
    case VmOutcome::kMissing:
      return "there is no such file";
    case VmOutcome::kHalfUnpacked:
      return "a VM pack was begun to be unpacked there, and never ended";
    case VmOutcome::kUnreadableKey:
      return "its registry key lacks JavaHome or MicroVersion";
    case VmOutcome::kNoUsableHome:
      return "its registry key names no folder with the program that would be started";
    case VmOutcome::kDuplicate:
      return "the same VM as one above";
    case VmOutcome::kNoMatchingToken:
      return "not of the wanted kinds and versions";
    case VmOutcome::kValidatorRejected:
      return "refused by the application's validator";
    case VmOutcome::kValidatorTimedOut:
      return "the application's validator did not end in time with it";
    case VmOutcome::kValidatorNotStarted:
      return "the application's validator could not be started with it";
    case VmOutcome::kOtherBitness:
      return "matches, but the platform number does not admit its class";
    case VmOutcome::kWrongBits:
      return "matches, but has not the bits that the application asks for";
    case VmOutcome::kUnsafeFolder:
      return "matches, but ordinary users can write to its folder";
    case VmOutcome::kNotFirst:
      return "would do, but another comes first";
    case VmOutcome::kOutranked:
      return "would do, but a higher one is there";
    case VmOutcome::kNoDescription:
      return "this description of VMs is missing or says nothing";
    case VmOutcome::kOtherSystem:
      return "this description of VMs is for another system";
    case VmOutcome::kNotFetched:
      return "this VM pack is not fetched to explain a launch";
  }
  return {};
}

const char* nameOf(OptionOrigin origin) {
  switch (origin) {
    case OptionOrigin::kLauncher:
      return "launcher";
    case OptionOrigin::kProperties:
      return "properties";
    case OptionOrigin::kUser:
      return "user";
  }
  return "";
}

std::string versionOf(const VmVersion& version) {
  if (version.packed() == 0) return "of unknown version";
  return std::to_string(version.generation()) + "." + std::to_string(version.minor()) + "." +
         std::to_string(version.micro());
}

std::string vmText(const SeenVm& seen) {
  const VmCandidate& vm = seen.vm.candidate;
  std::string text;
  if (!vm.vendor.empty()) text = utf8(nameOf(vm.kind)) + " " + versionOf(vm.version) + ", " + utf8(vm.vendor);
  if (seen.bits) text += (text.empty() ? "" : ", ") + std::to_string(*seen.bits) + "-bit";
  return text;
}

class Text {
 public:
  void line(const std::string& text) { text_ += text + "\n"; }
  void title(const std::string& text) { text_ += (text_.empty() ? "" : "\n") + text + "\n"; }
  void item(const std::string& text) { line("  " + text); }
  void list(const std::string& heading, const std::vector<std::string>& items) {
    if (items.empty()) return;
    title(heading);
    for (const std::string& each : items) item("- " + each);
  }
  void properties(const std::wstring& path, const PropertyFile& file) {
    title(utf8(path));
    for (const auto& [key, value] : file.entries()) item(utf8(key) + "=" + utf8(value));
  }
  void vms(const std::vector<SeenVm>& vms, bool accepted) {
    size_t number = 0;
    for (const SeenVm& seen : vms) {
      item(std::to_string(++number) + ". " + utf8(nameOf(seen.vm.source)) + ": " + utf8(seen.vm.where));
      const std::string kind = vmText(seen);
      if (seen.isVm()) item("   " + utf8(seen.vm.candidate.folder) + (kind.empty() ? "" : " (" + kind + ")"));
      item("   " + (accepted && seen.isAccepted ? "would do" : wordsFor(seen.vm.outcome)));
    }
    if (vms.empty()) item("nothing");
  }
  std::string finish() { return std::move(text_); }

 private:
  std::string text_;
};

std::string signatureText(const std::string& signature) {
  if (signature == "none") return "not signed";
  if (signature == "unchecked") return "signed";
  return "signature " + signature;
}

ordered_json orNull(const std::wstring& text) {
  return text.empty() ? ordered_json() : ordered_json(utf8(text));
}

template <typename Value>
ordered_json orNull(const std::optional<Value>& value) {
  return value ? ordered_json(*value) : ordered_json();
}

ordered_json valuesOf(const std::wstring& path, const PropertyFile& file) {
  ordered_json values = ordered_json::object();
  for (const auto& [key, value] : file.entries()) values[utf8(key)] = utf8(value);
  return {{"path", utf8(path)}, {"values", values}};
}

ordered_json jsonOf(const SeenVm& seen) {
  const VmCandidate& vm = seen.vm.candidate;
  ordered_json object = {{"source", utf8(nameOf(seen.vm.source))},
                         {"where", utf8(seen.vm.where)},
                         {"home", orNull(vm.folder)},
                         {"executable", orNull(vm.executable)},
                         {"kind", nullptr},
                         {"vendor", nullptr},
                         {"version", nullptr},
                         {"bits", orNull(seen.bits)},
                         {"outcome", utf8(nameOf(seen.vm.outcome))}};
  if (!vm.vendor.empty()) {
    object["kind"] = utf8(nameOf(vm.kind));
    object["vendor"] = utf8(vm.vendor);
    object["version"] = {vm.version.generation(), vm.version.minor(), vm.version.micro()};
  }
  return object;
}

void tellResult(const Explanation& e, Text& text) {
  const LaunchPlan& plan = *e.plan;
  text.title(e.isLaunched() ? "A launch runs" : "A launch would run, if it were not refused");
  for (const std::wstring& argument : e.arguments) text.item(argument.empty() ? "\"\"" : utf8(argument));
  text.title("In the folder");
  text.item(utf8(plan.request.workingDirectory));
  if (!plan.options.empty()) text.title("Options, and who asked for them");
  for (const VmOption& option : plan.options)
    text.item(std::string(nameOf(option.origin)) + ": " + utf8(option.text));
}

}  // namespace

std::string explanationText(const Explanation& e, const Application& application) {
  Text text;
  text.title(utf8(e.programPath));
  if (e.hasLauncher) {
    text.item("version " + utf8(e.programVersion) + ", launcher " + utf8(e.launcherVersion) + ", " +
              signatureText(e.signature));
  }
  text.properties(e.propertiesPath, application.properties);
  if (!e.jvmspecsPath.empty()) text.properties(e.jvmspecsPath, application.jvmspecs);

  std::string tokens;
  for (const std::wstring& token : e.tokens) tokens += " " + utf8(token);
  text.title("Wanted");
  text.item("VMs:" + (tokens.empty() ? " no list" : tokens) + "; platform " + std::to_string(e.platform) +
            "; " + (e.bits ? std::to_string(*e.bits) + " bits" : std::string("32 or 64 bits")) + "; " +
            (e.takesHighest ? "the highest version" : "the first one"));
  if (e.asksValidator)
    text.item("Tokens that are no keywords are put to the VMs by Verify.jar, which is run with them.");

  text.title("Looked at, in this order");
  text.vms(e.considered, false);
  if (e.onMachine) {
    text.title("Also on this machine, not looked at by this application");
    text.vms(*e.onMachine, true);
  }
  if (e.plan) {
    tellResult(e, text);
  } else if (!e.packUrl.empty()) {
    text.title("No Java so far: a launch fetches " + utf8(e.packUrl) +
               ", and ends with exit code 106 when it cannot");
  } else {
    text.title("No Java for this application: a launch ends with exit code 106");
  }
  text.list("What helps now", e.helpsNow);
  text.list("What the application's maker should change", e.forMaker);
  text.list("Warnings", e.warnings);
  return text.finish();
}

std::string explanationJson(const Explanation& e, const Application& application) {
  ordered_json object = {{"schema", 1}};
  object["application"] = {
      {"path", utf8(e.programPath)}, {"version", orNull(e.programVersion)}, {"launcher", nullptr}};
  if (e.hasLauncher)
    object["application"]["launcher"] = {{"version", orNull(e.launcherVersion)}, {"signature", e.signature}};
  object["properties"] = valuesOf(e.propertiesPath, application.properties);
  object["jvmspecs"] =
      e.jvmspecsPath.empty() ? ordered_json() : valuesOf(e.jvmspecsPath, application.jvmspecs);
  object["wanted"] = {{"tokens", utf8Of(e.tokens)},
                      {"platform", e.platform},
                      {"bits", orNull(e.bits)},
                      {"highest", e.takesHighest}};
  object["considered"] = ordered_json::array();
  for (const SeenVm& seen : e.considered) object["considered"].push_back(jsonOf(seen));
  if (e.onMachine) {
    object["onMachine"] = ordered_json::array();
    for (const SeenVm& seen : *e.onMachine) {
      object["onMachine"].push_back(jsonOf(seen));
      object["onMachine"].back()["accepted"] = seen.isAccepted;
    }
  }
  object["chosen"] = orNull(e.chosen);
  object["program"] = e.plan ? orNull(e.plan->program) : ordered_json();
  object["commandLine"] = utf8Of(e.arguments);
  object["options"] = ordered_json::array();
  if (e.plan) {
    for (const VmOption& option : e.plan->options)
      object["options"].push_back({{"origin", nameOf(option.origin)}, {"text", utf8(option.text)}});
  }
  object["workingFolder"] = e.plan ? orNull(e.plan->request.workingDirectory) : ordered_json();
  object["launched"] = e.isLaunched();
  object["fetches"] = orNull(e.packUrl);
  object["exitCode"] = orNull(e.exitCode);
  object["warnings"] = e.warnings;
  object["helpsNow"] = e.helpsNow;
  object["forMaker"] = e.forMaker;
  return object.dump(2) + "\n";
}

}  // namespace ryn
