// Features: named integer settings of the host, read and set at run time.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

/// A named integer setting with a default. Features made at start-up register themselves by name.
class QlFeature {
 public:
  /// Called after the value changes, with the new value.
  using Callback = void (*)(int newValue);

  QlFeature(const char* name, const char* description, const char* sourceFile, const char* group, int number,
            int defaultValue, Callback callback = nullptr);
  ~QlFeature();
  QlFeature(const QlFeature&) = delete;
  QlFeature& operator=(const QlFeature&) = delete;

  /// The current value; every read is counted. Reads and sets may come from several threads (two models
  /// compiled at once), so value and count are atomic; relaxed order is enough for a setting and a tally.
  int getValue() const;
  /// Sets the value (and calls the callback, if any).
  void setValue(int value);
  /// Back to the default value.
  void reset();
  int getDefaultValue() const { return defaultValue_; }
  /// How many times getValue was called.
  unsigned long getReadCount() const { return reads_.load(std::memory_order_relaxed); }

  const std::string& getName() const { return name_; }
  const std::string& getDescription() const { return description_; }
  const std::string& getSourceFile() const { return sourceFile_; }
  const std::string& getGroup() const { return group_; }
  int getNumber() const { return number_; }

  /// The registered feature of that name, or null.
  static QlFeature* find(const std::string& name);
  /// The names of all registered features, sorted.
  static std::vector<std::string> names();

 private:
  std::string name_, description_, sourceFile_, group_;
  int number_;
  int defaultValue_;
  std::atomic<int> value_;
  Callback callback_;
  mutable std::atomic<unsigned long> reads_{0};
};
