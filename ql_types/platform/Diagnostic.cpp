// Diagnostics and the exceptions that carry them.
#include "ql_types/platform/Diagnostic.hpp"

#include <iostream>
#include <new>

namespace fl {
namespace except {

IException::IException(std::shared_ptr<const qlsvDiagnosticImpl> diagnostic) : diagnostic_(std::move(diagnostic)) {}
IException::~IException() = default;

const char* IException::what() const noexcept {
  return diagnostic_ ? diagnostic_->getMessage().c_str() : "fl::except::IException";
}

}  // namespace except
}  // namespace fl

qlsvDiagnosticImpl::qlsvDiagnosticImpl(resource_core::BaseMsgID message)
    : message_(std::move(message)), text_(resource_core::formatMessage(message_)) {}

qlsvDiagnosticImpl::~qlsvDiagnosticImpl() = default;

std::vector<std::string> qlsvDiagnosticImpl::getArgumentTexts() const {
  return resource_core::argumentTexts(message_.getArguments());
}

std::vector<const qlsvDiagnosticImpl*> qlsvDiagnosticImpl::getCauses() const {
  std::vector<const qlsvDiagnosticImpl*> out;
  out.reserve(causes_.size());
  for (const auto& c : causes_) out.push_back(c.get());
  return out;
}

namespace {
void appendReport(const qlsvDiagnosticImpl& d, int depth, std::string& out) {
  out.append(static_cast<size_t>(depth) * 4, ' ');
  out += d.getMessage();
  out += '\n';
  for (const qlsvDiagnosticImpl* c : d.getCauses()) appendReport(*c, depth + 1, out);
}
}  // namespace

std::string qlsvDiagnosticImpl::getReport() const {
  std::string out;
  appendReport(*this, 0, out);
  return out;
}

std::unique_ptr<qlsvDiagnosticImpl> qlsvDiagnosticImpl::clone(bool withCauses) const {
  auto copy = std::make_unique<qlsvDiagnosticImpl>(message_);
  if (withCauses)
    for (const auto& c : causes_) copy->addCause(c->clone(true));
  return copy;
}

void qlsvDiagnosticImpl::addCause(std::unique_ptr<qlsvDiagnosticImpl> cause) {
  if (cause) causes_.push_back(std::move(cause));
}

qlsvDiagnostic qlsvCreateDiagnosticFromMessageID(const resource_core::BaseMsgID& message) {
  return std::make_unique<qlsvDiagnosticImpl>(message);
}

qlsvDiagnostic qlsvCreateDiagnostic(const resource_core::BaseMsgID& message, std::vector<qlsvDiagnostic> causes) {
  auto d = std::make_unique<qlsvDiagnosticImpl>(message);
  for (auto& c : causes) d->addCause(std::move(c));
  return d;
}

qlsvDiagnostic qlsvCreateDiagnosticFromIException(const fl::except::IException& e, bool withCauses) {
  if (const qlsvDiagnosticImpl* d = e.getDiagnostic()) return d->clone(withCauses);
  return qlMakeDiagnostic(qlmsg::services::ForeignException, e.what());
}

qlsvDiagnostic qlsvCreateMemoryAllocationDiagnostic() { return qlMakeDiagnostic(qlmsg::services::OutOfMemory); }

qlsvDiagnostic qlsvConcatenateDiagnostics(qlsvDiagnostic first, qlsvDiagnostic second, bool nested) {
  if (!first) return second;
  if (!second) return first;
  if (nested) {
    first->addCause(std::move(second));
    return first;
  }
  // Flat: second joins the chain, then its own causes, each as a sibling.
  std::vector<qlsvDiagnostic> lifted;
  for (const qlsvDiagnosticImpl* c : second->getCauses()) lifted.push_back(c->clone(true));
  first->addCause(second->clone(false));
  for (auto& c : lifted) first->addCause(std::move(c));
  return first;
}

void qlsvThrowIExceptionFromDiagnostic(qlsvDiagnostic diagnostic, const char* context) {
  if (!diagnostic) diagnostic = qlsvCreateMemoryAllocationDiagnostic();
  if (context && *context) diagnostic->addCause(qlMakeDiagnostic(qlmsg::services::ForeignException, context));
  throw fl::except::UserException(std::shared_ptr<const qlsvDiagnosticImpl>(std::move(diagnostic)));
}

void qlsvThrowMsgIDException(qlsvDiagnostic diagnostic) {
  if (!diagnostic) diagnostic = qlsvCreateMemoryAllocationDiagnostic();
  throw fl::except::MsgIDException(std::shared_ptr<const qlsvDiagnosticImpl>(std::move(diagnostic)));
}

namespace {
void defaultWarningSink(const qlsvDiagnosticImpl& d) { std::cerr << "Warning: " << d.getReport(); }

qlsvWarningHandler& warningHandler() {
  static qlsvWarningHandler handler = defaultWarningSink;
  return handler;
}
}  // namespace

void qlsvReportAsWarning(qlsvDiagnostic diagnostic) {
  if (diagnostic) warningHandler()(*diagnostic);
}

void qlsvDiscardDiagnostic(qlsvDiagnostic diagnostic) { diagnostic.reset(); }

qlsvWarningHandler qlsvSetWarningHandler(qlsvWarningHandler handler) {
  qlsvWarningHandler previous = std::move(warningHandler());
  warningHandler() = handler ? std::move(handler) : qlsvWarningHandler(defaultWarningSink);
  return previous;
}
