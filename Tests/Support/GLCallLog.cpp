#include "Support/GLCallLog.h"

#include <algorithm>

#include <glbinding/AbstractFunction.h>
#include <glbinding/AbstractValue.h>
#include <glbinding/CallbackMask.h>
#include <glbinding/FunctionCall.h>
#include <glbinding/callbacks.h>

namespace Quillmere::Velmira {

namespace {
GLCallLog* gActiveLog = nullptr;
}

std::string GLCallLog::Call::text() const {
  std::string result = name + "(";
  for (std::size_t i = 0; i < arguments.size(); ++i) result += (i == 0 ? "" : ", ") + arguments[i];
  return result + ")";
}

GLCallLog::GLCallLog() {
  gActiveLog = this;
  glbinding::setCallbackMask(glbinding::CallbackMask::After | glbinding::CallbackMask::ParametersAndReturnValue);
  glbinding::setAfterCallback([](const glbinding::FunctionCall& call) {
    Call recorded{call.function->name(), {}};
    for (const glbinding::AbstractValue* value : call.parameters) recorded.arguments.push_back(value->asString());
    std::lock_guard<std::mutex> lock(gActiveLog->mMutex);
    gActiveLog->mCalls.push_back(std::move(recorded));
  });
}

GLCallLog::~GLCallLog() {
  glbinding::setCallbackMask(glbinding::CallbackMask::None);
  glbinding::setAfterCallback(nullptr);
  gActiveLog = nullptr;
}

std::vector<GLCallLog::Call> GLCallLog::calls() const {
  std::lock_guard<std::mutex> lock(mMutex);
  return mCalls;
}

std::vector<std::string> GLCallLog::names() const {
  std::vector<std::string> result;
  for (const Call& call : calls()) result.push_back(call.name);
  return result;
}

std::vector<std::string> GLCallLog::only(const std::vector<std::string>& wanted) const {
  std::vector<std::string> result;
  for (const Call& call : calls()) {
    if (std::find(wanted.begin(), wanted.end(), call.name) != wanted.end()) result.push_back(call.text());
  }
  return result;
}

int GLCallLog::count(const std::string& name) const {
  std::vector<std::string> all = names();
  return static_cast<int>(std::count(all.begin(), all.end(), name));
}

}  // namespace Quillmere::Velmira
