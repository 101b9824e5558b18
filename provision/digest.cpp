#include "provision/digest.h"

#include <windows.h>

#include <wincrypt.h>

#include <string_view>

#include "platform/output.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

constexpr DWORD kMd5Bytes = 16;

struct ProviderPolicy {
  using Value = HCRYPTPROV;
  static Value none() { return 0; }
  static void close(Value value) { CryptReleaseContext(value, 0); }
};

struct HashPolicy {
  using Value = HCRYPTHASH;
  static Value none() { return 0; }
  static void close(Value value) { CryptDestroyHash(value); }
};

/// Everything the computation holds; the hash goes before its provider.
struct HashSession {
  UniqueFile file;
  UniqueResource<ProviderPolicy> provider;
  UniqueResource<HashPolicy> hash;

  void close() {
    hash.reset();
    provider.reset();
    file.reset();
  }
};

void report(std::wstring_view text) {
  const auto error = static_cast<int>(GetLastError());
  writeOutput(concat({text, decimal(error), L"\n"}));
}

}  // namespace

std::wstring md5OfFile(const std::wstring& path) {
  // A failure does not end the computation: the calls that follow fail on what was closed, each with its
  // own line (kept for compatibility).
  HashSession session;
  session.file.reset(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  // Only the first character of the path is shown (kept for compatibility).
  if (!session.file) report(concat({L"Error opening file ", path.substr(0, 1), L"\nError: "}));

  if (!CryptAcquireContextW(session.provider.receive(), nullptr, nullptr, PROV_RSA_FULL,
                            CRYPT_VERIFYCONTEXT)) {
    report(L"CryptAcquireContext failed: ");
    session.close();
  }
  if (!CryptCreateHash(session.provider.get(), CALG_MD5, 0, 0, session.hash.receive())) {
    report(L"CryptAcquireContext failed: ");
    session.close();
  }

  BYTE buffer[1024];
  DWORD size = 0;
  for (;;) {
    if (!ReadFile(session.file.get(), buffer, sizeof(buffer), &size, nullptr)) {
      report(L"ReadFile failed: ");
      session.close();
      break;
    }
    if (size == 0) break;
    if (!CryptHashData(session.hash.get(), buffer, size, 0)) {
      report(L"CryptHashData failed: ");
      session.close();
    }
  }

  BYTE digest[kMd5Bytes];
  DWORD digestSize = kMd5Bytes;
  if (!CryptGetHashParam(session.hash.get(), HP_HASHVAL, digest, &digestSize, 0)) {
    report(L"CryptGetHashParam failed: ");
    return {};
  }
  writeOutput(L"\n");
  return hexadecimal({digest, digestSize});
}

}  // namespace ryn
