#include "GLCallRecorder.h"

#include <glbinding/AbstractFunction.h>
#include <glbinding/AbstractValue.h>
#include <glbinding/CallbackMask.h>
#include <glbinding/FunctionCall.h>
#include <glbinding/callbacks.h>

#include <algorithm>
#include <sstream>

namespace Quillmere::Velmira {

GLCallRecorder::GLCallRecorder() {
  glbinding::setCallbackMask(glbinding::CallbackMask::After | glbinding::CallbackMask::Parameters);
  glbinding::setAfterCallback([this](const glbinding::FunctionCall& call) {
    Call recorded;
    recorded.name = call.function->name();
    for (const glbinding::AbstractValue* parameter : call.parameters) {
      std::ostringstream text;
      parameter->printOn(text);
      recorded.parameters.push_back(text.str());
    }
    mCalls.push_back(recorded);
  });
}

GLCallRecorder::~GLCallRecorder() {
  glbinding::setCallbackMask(glbinding::CallbackMask::None);
  glbinding::setAfterCallback(nullptr);
}

std::vector<std::string> GLCallRecorder::names() const {
  std::vector<std::string> result;
  for (const Call& call : mCalls) {
    result.push_back(call.name);
  }
  return result;
}

std::vector<GLCallRecorder::Call> GLCallRecorder::callsOf(const std::string& name) const {
  std::vector<Call> result;
  std::copy_if(mCalls.begin(), mCalls.end(), std::back_inserter(result),
               [&name](const Call& call) { return call.name == name; });
  return result;
}

int GLCallRecorder::count(const std::string& name) const { return static_cast<int>(callsOf(name).size()); }

}  // namespace Quillmere::Velmira
