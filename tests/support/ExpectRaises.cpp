#include "support/ExpectRaises.hpp"

#include "ql_types/platform/Diagnostic.hpp"

namespace qltest {

namespace {
std::string join(const std::vector<std::string>& v) {
  std::string s = "{";
  for (size_t i = 0; i < v.size(); ++i) s += (i ? ", \"" : "\"") + v[i] + "\"";
  return s + "}";
}
}  // namespace

testing::AssertionResult raises(const std::function<void()>& fn, const std::string& catalog, const std::string& key,
                                const std::vector<std::string>& args) {
  try {
    fn();
  } catch (const fl::except::IException& e) {
    const qlsvDiagnosticImpl* d = e.getDiagnostic();
    if (!d) return testing::AssertionFailure() << "exception carries no diagnostic";
    if (d->getCatalog() != catalog || d->getKey() != key || d->getArgumentTexts() != args)
      return testing::AssertionFailure() << "raised " << d->getCatalog() << " / " << d->getKey() << " "
                                         << join(d->getArgumentTexts()) << ", expected " << catalog << " / " << key
                                         << " " << join(args) << " (" << d->getMessage() << ")";
    return testing::AssertionSuccess();
  } catch (const std::exception& e) {
    return testing::AssertionFailure() << "threw a foreign exception: " << e.what();
  } catch (...) {
    return testing::AssertionFailure() << "threw something that is not an exception";
  }
  return testing::AssertionFailure() << "raised nothing, expected " << catalog << " / " << key;
}

}  // namespace qltest

// Under AddressSanitizer, let impossible allocations return null so out-of-memory paths can be tested.
extern "C" const char* __asan_default_options() { return "allocator_may_return_null=1"; }
