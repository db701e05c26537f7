// The foundation exception family that every error of the library is thrown as.
//
//   IException            the base every host catches; carries one diagnostic
//   IMsgIDException       an error identified by a catalogue message (every error here)
//   IUserException        an error caused by the user's input (thrown diagnostics)
//
// A diagnostic thrown with qlsvThrowIExceptionFromDiagnostic is both a user and a
// message-id exception, so a loop that catches IUserException per item and an outer
// IMsgIDException handler per stage both see it; a failure of a service (a database
// call, say) is thrown as MsgIDException only and passes the per-item catch.
#pragma once

#include <exception>
#include <memory>
#include <string>

class qlsvDiagnosticImpl;

namespace fl {
namespace except {

/// Base of all exceptions of the library; carries the diagnostic that says what happened.
class IException : public std::exception {
 public:
  explicit IException(std::shared_ptr<const qlsvDiagnosticImpl> diagnostic);
  ~IException() override;
  IException(const IException&) = default;
  IException& operator=(const IException&) = default;

  /// The diagnostic carried; never null. It lives as long as any copy of the exception.
  const qlsvDiagnosticImpl* getDiagnostic() const noexcept { return diagnostic_.get(); }
  /// The formatted English message.
  const char* what() const noexcept override;

 private:
  std::shared_ptr<const qlsvDiagnosticImpl> diagnostic_;
};

/// An exception identified by a catalogue message.
class IMsgIDException : public virtual IException {
 protected:
  IMsgIDException() : IException(nullptr) {}
};

/// An exception caused by what a user gave (a name, an expression, a value).
class IUserException : public virtual IException {
 protected:
  IUserException() : IException(nullptr) {}
};

/// The concrete class of thrown diagnostics: a user error with a message id.
class UserException : public IMsgIDException, public IUserException {
 public:
  explicit UserException(std::shared_ptr<const qlsvDiagnosticImpl> diagnostic)
      : IException(std::move(diagnostic)) {}
};

/// The concrete class of service failures (database, package access): not a user error.
class MsgIDException : public IMsgIDException {
 public:
  explicit MsgIDException(std::shared_ptr<const qlsvDiagnosticImpl> diagnostic)
      : IException(std::move(diagnostic)) {}
};

}  // namespace except
}  // namespace fl
