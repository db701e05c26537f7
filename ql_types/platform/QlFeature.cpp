// Features and their registry by name.
#include "ql_types/platform/QlFeature.hpp"

#include <map>

namespace {
std::map<std::string, QlFeature*>& registry() {
  static std::map<std::string, QlFeature*> features;
  return features;
}
}  // namespace

QlFeature::QlFeature(const char* name, const char* description, const char* sourceFile, const char* group, int number,
                     int defaultValue, Callback callback)
    : name_(name ? name : ""),
      description_(description ? description : ""),
      sourceFile_(sourceFile ? sourceFile : ""),
      group_(group ? group : ""),
      number_(number),
      defaultValue_(defaultValue),
      value_(defaultValue),
      callback_(callback) {
  registry()[name_] = this;
}

QlFeature::~QlFeature() {
  auto it = registry().find(name_);
  if (it != registry().end() && it->second == this) registry().erase(it);
}

int QlFeature::getValue() const {
  reads_.fetch_add(1, std::memory_order_relaxed);
  return value_.load(std::memory_order_relaxed);
}

void QlFeature::setValue(int value) {
  value_.store(value, std::memory_order_relaxed);
  if (callback_) callback_(value);
}

void QlFeature::reset() { setValue(defaultValue_); }

QlFeature* QlFeature::find(const std::string& name) {
  auto it = registry().find(name);
  return it == registry().end() ? nullptr : it->second;
}

std::vector<std::string> QlFeature::names() {
  std::vector<std::string> out;
  for (const auto& kv : registry()) out.push_back(kv.first);
  return out;
}
