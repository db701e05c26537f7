// The fixed-point text forms and their process-wide cache.
#include "ql_types/fixpt/fxpDataTypeText.hpp"

#include <boost/lexical_cast.hpp>

#include <cstdio>
#include <map>
#include <unordered_map>

#include "ql_types/platform/Text.hpp"

namespace {

constexpr int kSlots = 7;  // slot 0: identifier; slots 1-6: constructor forms

struct fxpTextCacheEntry {
  explicit fxpTextCacheEntry(const fxpDataTypeProp& p) : prop(p) {}
  fxpDataTypeProp prop;  // all text of the entry is generated from this copy
  std::string text[kSlots];
};

struct HashKey {
  std::size_t operator()(const fxpDataTypeProp& p) const {
    // Integer fields only; the records here all have factor 1 and bias 0.
    std::uint32_t seed = 0;
    for (std::uint32_t v : {static_cast<std::uint32_t>(p.DataTypeMode), p.Signedness,
                            static_cast<std::uint32_t>(p.WordLength), static_cast<std::uint32_t>(p.FixedExponent),
                            static_cast<std::uint32_t>(p.DataTypeOverride)})
      seed ^= v + 0x9E3779B9u + (seed << 6) + (seed >> 2);
    return seed;
  }
};

struct EqualKey {
  // Over the hash's fields and DataTypeOverride too, so that keys that compare equal hash equal, as the
  // container requires. The hash is one-to-one in the override for fixed other fields, so overrides still
  // keep entries apart exactly as the hash alone did. Factor and bias are 1.0 and 0.0 (or -0.0) here.
  bool operator()(const fxpDataTypeProp& a, const fxpDataTypeProp& b) const {
    return a.DataTypeMode == b.DataTypeMode && a.Signedness == b.Signedness && a.WordLength == b.WordLength &&
           a.FixedExponent == b.FixedExponent && a.DataTypeOverride == b.DataTypeOverride &&
           a.SlopeAdjustmentFactor == b.SlopeAdjustmentFactor && a.Bias == b.Bias;
  }
};

// Orders doubles as IEEE does, except that NaN sorts after every number and equals itself,
// which keeps the map's ordering strict and weak for any record.
int compareDoubles(double a, double b) {
  const bool na = std::isnan(a), nb = std::isnan(b);
  if (na || nb) return na == nb ? 0 : (na ? 1 : -1);
  return a < b ? -1 : (a > b ? 1 : 0);
}

struct OrderKey {
  bool operator()(const fxpDataTypeProp& a, const fxpDataTypeProp& b) const {
    const auto ma = static_cast<std::int32_t>(a.DataTypeMode), mb = static_cast<std::int32_t>(b.DataTypeMode);
    if (ma != mb) return ma < mb;
    if (ma >= 2) return a.DataTypeOverride < b.DataTypeOverride;
    if (a.FixedExponent != b.FixedExponent) return a.FixedExponent < b.FixedExponent;
    if (int c = compareDoubles(a.SlopeAdjustmentFactor, b.SlopeAdjustmentFactor)) return c < 0;
    if (int c = compareDoubles(a.Bias, b.Bias)) return c < 0;
    if (a.WordLength != b.WordLength)
      return static_cast<std::uint32_t>(a.WordLength) < static_cast<std::uint32_t>(b.WordLength);
    if (a.Signedness != b.Signedness) return a.Signedness < b.Signedness;
    return a.DataTypeOverride < b.DataTypeOverride;
  }
};

struct fxpTextCache {
  std::unordered_map<fxpDataTypeProp, fxpTextCacheEntry, HashKey, EqualKey> fxpTextHashCache;
  std::map<fxpDataTypeProp, fxpTextCacheEntry, OrderKey> fxpTextOrderedCache;

  fxpTextCacheEntry& entryFor(const fxpDataTypeProp& p) {
    if (p.SlopeAdjustmentFactor == 1.0 && p.Bias == 0.0)
      return fxpTextHashCache.try_emplace(p, p).first->second;
    return fxpTextOrderedCache.try_emplace(p, p).first->second;
  }
};

fxpTextCache& cache() {
  static fxpTextCache instance;
  return instance;
}

// The in-range test: the slope can be written as one double.
bool exponentInRange(int exponent) { return exponent >= -1022 && exponent <= 1023; }

template <class T>
std::string decimal(T v) {
  return boost::lexical_cast<std::string>(v);
}

std::string constructorText(const fxpDataTypeProp& p, int base, int scaling) {
  const bool scaledDouble = p.DataTypeMode == FXP_DT_SCALED_DOUBLE;
  std::string s = (base == 0 || scaledDouble) ? "numerictype(" : "fixdt(";
  switch (p.DataTypeMode) {
    case FXP_DT_DOUBLE:
      s += "'double'";
      break;
    case FXP_DT_SINGLE:
      s += "'single'";
      break;
    case FXP_DT_FIXPT:
    case FXP_DT_SCALED_DOUBLE:
      s += p.Signedness == 1u ? "1" : (p.Signedness == 0u ? "0" : "[]");
      s += "," + decimal(p.WordLength);
      if (scaling == 2) {
        // no scaling arguments
      } else if (scaling == 0 && p.SlopeAdjustmentFactor == 1.0 && p.Bias == 0.0) {
        s += "," + decimal(-static_cast<long long>(p.FixedExponent));
      } else if (exponentInRange(p.FixedExponent)) {
        s += "," + qlsv_dtoa_fitools(std::ldexp(p.SlopeAdjustmentFactor, p.FixedExponent));
        s += "," + qlsv_dtoa_fitools(p.Bias);
      } else {
        s += "," + qlsv_dtoa_fitools(p.SlopeAdjustmentFactor) + "," + decimal(p.FixedExponent);
        s += "," + qlsv_dtoa_fitools(p.Bias);
      }
      break;
    default:  // boolean and unknown modes
      s += "'boolean'";
      break;
  }
  if (scaledDouble) s += ",'DataType','ScaledDouble'";
  if (p.DataTypeMode != FXP_DT_BOOLEAN && p.DataTypeOverride == FXP_DTO_OFF) s += ",'DataTypeOverride','Off'";
  s += ")";
  return s;
}

// A number as part of a name: "." -> "p", "+" dropped, "-" -> "n", "E" -> "e", trimmed.
std::string encodeNumber(double v) {
  std::string s;
  for (char c : qlsv_dtoa(v, false)) {
    if (c == '.')
      s += 'p';
    else if (c == '+')
      continue;
    else if (c == '-')
      s += 'n';
    else if (c == 'E')
      s += 'e';
    else
      s += c;
  }
  if (s.size() >= 2 && s.compare(s.size() - 2, 2, "p0") == 0) s.erase(s.size() - 2);
  if (s.size() >= 2 && s.compare(0, 2, "0p") == 0) s.erase(0, 1);
  if (s.size() >= 3 && s.compare(0, 3, "n0p") == 0) s.erase(1, 1);
  return s;
}

std::string exponentTerm(int exponent) {
  if (exponent == 0) return "";
  std::string s = "_E";
  if (exponent < 0) s += 'n';
  s += decimal(exponent < 0 ? -static_cast<long long>(exponent) : static_cast<long long>(exponent));
  return s;
}

std::string identifierText(const fxpDataTypeProp& p) {
  const auto mode = static_cast<std::uint32_t>(p.DataTypeMode);
  if (mode == FXP_DT_DOUBLE) return "double";
  if (mode == FXP_DT_SINGLE) return "single";
  if (mode >= FXP_DT_BOOLEAN) return "boolean";
  const bool isSigned = p.Signedness == 1u;
  if (mode == FXP_DT_FIXPT && p.isScalingTrivial() &&
      (p.WordLength == 8 || p.WordLength == 16 || p.WordLength == 32))
    return (isSigned ? "int" : "uint") + decimal(p.WordLength);
  std::string s = mode == FXP_DT_SCALED_DOUBLE ? (isSigned ? "flts" : "fltu") : (isSigned ? "sfix" : "ufix");
  s += decimal(p.WordLength);
  if (p.SlopeAdjustmentFactor == 1.0) {
    s += exponentTerm(p.FixedExponent);
  } else if (exponentInRange(p.FixedExponent)) {
    const double slope = std::ldexp(p.SlopeAdjustmentFactor, p.FixedExponent);
    if (slope != 1.0) s += "_S" + encodeNumber(slope);
  } else {
    s += "_F" + encodeNumber(p.SlopeAdjustmentFactor) + exponentTerm(p.FixedExponent);
  }
  if (p.Bias != 0.0) s += "_B" + encodeNumber(p.Bias);
  return s;
}

const char* modeName(fxpModeDataType mode) {
  switch (mode) {
    case FXP_DT_FIXPT: return "FXP_DT_FIXPT";
    case FXP_DT_SCALED_DOUBLE: return "FXP_DT_SCALED_DOUBLE";
    case FXP_DT_DOUBLE: return "FXP_DT_DOUBLE";
    case FXP_DT_SINGLE: return "FXP_DT_SINGLE";
    case FXP_DT_BOOLEAN: return "FXP_DT_BOOLEAN";
    default: return "UNKNOWN";
  }
}

}  // namespace

std::string const* fxpDataTypeToConstructorString(fxpDataTypeProp const& prop, FxpDT::baseCtorPrefer base,
                                                  FxpDT::scalingRepPrefer scaling) {
  fxpTextCacheEntry& entry = cache().entryFor(prop);
  const int s = scaling == 0 ? 0 : (scaling == 1 ? 1 : 2);
  const int b = base == 0 ? 0 : 1;
  std::string& slot = entry.text[1 + 2 * s + b];
  if (slot.empty()) slot = constructorText(entry.prop, b, s);
  return &slot;
}

std::string const* fxpDataTypeToIdentifierString(fxpDataTypeProp const* const prop) {
  fxpTextCacheEntry& entry = cache().entryFor(*prop);
  std::string& slot = entry.text[0];
  if (slot.empty()) slot = identifierText(entry.prop);
  return &slot;
}

void displayFxpDTP(fxpDataTypeProp const* prop) {
  std::printf("\nDataTypeMode        %d   %s\n", static_cast<int>(prop->DataTypeMode), modeName(prop->DataTypeMode));
  std::printf("Signedness            %u\n", prop->Signedness);
  std::printf("WordLength            %d\n", prop->WordLength);
  std::printf("SlopeAdjustmentFactor %#25.17g\n", prop->SlopeAdjustmentFactor);
  std::printf("FixedExponent         %d\n", prop->FixedExponent);
  std::printf("Bias                  %#25.17g\n", prop->Bias);
  std::printf("\n");
}

void displayFxpDTPFlat(fxpDataTypeProp const* prop) {
  std::printf("\nMode=%d(%s)  Signed=%u  WL=%d  SAF=%#25.17g  FE=%d  B=%#25.17g\n",
              static_cast<int>(prop->DataTypeMode), modeName(prop->DataTypeMode), prop->Signedness, prop->WordLength,
              prop->SlopeAdjustmentFactor, prop->FixedExponent, prop->Bias);
}

bool fxpDtpPreAssert(bool condition, fxpDataTypeProp const* prop) {
  if (!condition) {
    std::printf("Data Type Assertion\n");
    displayFxpDTP(prop);
  }
  return condition;
}
