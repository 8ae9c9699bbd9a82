#include "Helper/ScriptHelper.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "AE_GeneralPlug.h"
#include "Helper/SuiteScoper.h"

namespace Quillmere::Velmira {

namespace {

typedef SuiteScoper<AEGP_MemorySuite1> MemorySuite;

// One handle the script left, and its bytes while it is locked. The host may leave a
// handle null, or refuse to lock it; `text` is then null and nothing is read from it.
struct HandleText {
  AEGP_MemHandle handle = nullptr;
  bool locked = false;
  const char* text = nullptr;
};

HandleText lockHandle(const MemorySuite& memory, AEGP_MemHandle handle) {
  HandleText held;
  held.handle = handle;
  void* bytes = nullptr;
  if (handle != nullptr && memory->AEGP_LockMemHandle(handle, &bytes) == A_Err_NONE) {
    held.locked = true;
    held.text = static_cast<const char*>(bytes);
  }
  return held;
}

// Up to the terminating zero, but never past the handle's own size: a text the host did
// not terminate is cut at the end of its handle instead of read beyond it.
std::string readText(const MemorySuite& memory, const HandleText& held) {
  AEGP_MemSize size = 0;
  if (held.text == nullptr || memory->AEGP_GetMemHandleSize(held.handle, &size) != A_Err_NONE) {
    return std::string();
  }
  return std::string(held.text, strnlen(held.text, static_cast<size_t>(size)));
}

// The handle is unlocked before it is freed, so a host that counts locks sees them
// balanced; a host that frees locked handles loses nothing by it.
void unlockAndFree(const MemorySuite& memory, const HandleText& held) {
  if (held.locked) {
    memory->AEGP_UnlockMemHandle(held.handle);
  }
  if (held.handle != nullptr) {
    memory->AEGP_FreeMemHandle(held.handle);
  }
}

bool isWhiteSpace(char c) {
  // Through unsigned char: the same class as the signed value in the "C" locale, without
  // handing isspace a negative value for the bytes of UTF-8 text.
  return std::isspace(static_cast<unsigned char>(c)) != 0;
}

}  // namespace

std::string ScriptHelper::RunSriptAndGetStringResult(SPBasicSuite* basicSuite, const char* script) {
  SuiteScoper<AEGP_UtilitySuite5> utilitySuite(basicSuite, kAEGPUtilitySuite, kAEGPUtilitySuiteVersion5);
  MemorySuite memorySuite(basicSuite, kAEGPMemorySuite, kAEGPMemorySuiteVersion1);
  std::string result;

  AEGP_MemHandle resultHandle = nullptr;
  AEGP_MemHandle errorHandle = nullptr;
  // A failed script is known by its handles, not by this code: whatever it returned, only
  // a result handle the host filled in is read.
  utilitySuite->AEGP_ExecuteScript(0, script, false, &resultHandle, &errorHandle);

  const HandleText resultText = lockHandle(memorySuite, resultHandle);
  // The error text is never returned, so its handle is not locked, only freed.
  HandleText errorText;
  errorText.handle = errorHandle;
  try {
    result = readText(memorySuite, resultText);
  } catch (...) {
    unlockAndFree(memorySuite, resultText);
    unlockAndFree(memorySuite, errorText);
    throw;
  }
  unlockAndFree(memorySuite, resultText);
  unlockAndFree(memorySuite, errorText);
  return result;
}

std::string ScriptHelper::TrimStringWhiteSpaces(const std::string& text) {
  std::string trimmed = text;
  trimmed.erase(trimmed.begin(), std::find_if_not(trimmed.begin(), trimmed.end(), isWhiteSpace));
  trimmed.erase(std::find_if_not(trimmed.rbegin(), trimmed.rend(), isWhiteSpace).base(), trimmed.end());
  return trimmed;
}

}  // namespace Quillmere::Velmira
