// Diagnostics: what the library reports, as values that can be chained, thrown or warned.
//
// Ownership is in the types: a qlsvDiagnostic (a unique_ptr) owns its diagnostic and
// everything chained to it; functions that take a qlsvDiagnostic by value consume it,
// and a thrown exception shares the diagnostic it carries with its copies.
#pragma once

#include <functional>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "ql_types/platform/BaseMsgID.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/MessageKeys.hpp"

/// One diagnostic: a message, its formatted English text, and the diagnostics chained to it.
class qlsvDiagnosticImpl {
 public:
  explicit qlsvDiagnosticImpl(resource_core::BaseMsgID message);
  ~qlsvDiagnosticImpl();
  qlsvDiagnosticImpl(const qlsvDiagnosticImpl&) = delete;
  qlsvDiagnosticImpl& operator=(const qlsvDiagnosticImpl&) = delete;

  /// The catalogue name, e.g. "QuillonTypes:general".
  const std::string& getCatalog() const { return message_.getCatalog(); }
  /// The key in the catalogue, e.g. "InvalidDataTypeSize".
  const std::string& getKey() const { return message_.getKey(); }
  /// The arguments as they were given.
  const std::vector<resource_core::MsgArg>& getArguments() const { return message_.getArguments(); }
  /// Each argument as UTF-8 text, integers in decimal.
  std::vector<std::string> getArgumentTexts() const;
  /// The formatted English text of this diagnostic alone.
  const std::string& getMessage() const { return text_; }
  /// The diagnostics chained to this one, in order.
  std::vector<const qlsvDiagnosticImpl*> getCauses() const;
  /// This diagnostic's text followed by those of its causes, indented, one a line.
  std::string getReport() const;
  /// A deep copy, causes included when withCauses is true.
  std::unique_ptr<qlsvDiagnosticImpl> clone(bool withCauses = true) const;

  /// Appends a cause at the end of the chain (takes ownership).
  void addCause(std::unique_ptr<qlsvDiagnosticImpl> cause);

 private:
  resource_core::BaseMsgID message_;
  std::string text_;
  std::vector<std::unique_ptr<qlsvDiagnosticImpl>> causes_;
};

/// The owning handle of a diagnostic; null means "no diagnostic".
using qlsvDiagnostic = std::unique_ptr<qlsvDiagnosticImpl>;

/// A diagnostic from a catalogue message.
qlsvDiagnostic qlsvCreateDiagnosticFromMessageID(const resource_core::BaseMsgID& message);
/// A diagnostic from a catalogue message, with the given causes chained to it in order.
qlsvDiagnostic qlsvCreateDiagnostic(const resource_core::BaseMsgID& message,
                                    std::vector<qlsvDiagnostic> causes = {});
/// A copy of the diagnostic that an exception carries; with withCauses its chain is copied too.
qlsvDiagnostic qlsvCreateDiagnosticFromIException(const fl::except::IException& e, bool withCauses);
/// The diagnostic for exhausted memory.
qlsvDiagnostic qlsvCreateMemoryAllocationDiagnostic();
/// Joins two diagnostics into one chain headed by first (or by second when first is null).
/// second becomes the last cause of first; with nested false, second's own causes are lifted
/// beside it, so a chain built step by step stays one flat list.
qlsvDiagnostic qlsvConcatenateDiagnostics(qlsvDiagnostic first, qlsvDiagnostic second, bool nested);
/// Throws the diagnostic as fl::except::UserException. A null diagnostic throws the
/// memory diagnostic rather than nothing. context, when given, is chained as a plain cause.
[[noreturn]] void qlsvThrowIExceptionFromDiagnostic(qlsvDiagnostic diagnostic, const char* context);
/// Throws a service failure: an IMsgIDException that is not a user error.
[[noreturn]] void qlsvThrowMsgIDException(qlsvDiagnostic diagnostic);
/// Hands the diagnostic to the current warning sink (consumes it; null is ignored).
void qlsvReportAsWarning(qlsvDiagnostic diagnostic);
/// Drops a diagnostic on purpose.
void qlsvDiscardDiagnostic(qlsvDiagnostic diagnostic);

/// Where warnings go. The default writes the report to standard error.
using qlsvWarningHandler = std::function<void(const qlsvDiagnosticImpl&)>;
/// Replaces the warning sink and returns the previous one; an empty handler restores the default.
qlsvWarningHandler qlsvSetWarningHandler(qlsvWarningHandler handler);

/// Builds a message of a typed key and throws it: the one route for rule violations.
template <int N, class... A>
[[noreturn]] void qlRaise(const resource_core::MsgKey<N>& key, A&&... args) {
  qlsvThrowIExceptionFromDiagnostic(
      qlsvCreateDiagnosticFromMessageID(resource_core::makeMessage(key, std::forward<A>(args)...)), nullptr);
}

/// A diagnostic of a typed key, for chains and warnings.
template <int N, class... A>
qlsvDiagnostic qlMakeDiagnostic(const resource_core::MsgKey<N>& key, A&&... args) {
  return qlsvCreateDiagnosticFromMessageID(resource_core::makeMessage(key, std::forward<A>(args)...));
}
