// Typed message keys of the compiled-in catalogues.
//
// Each key carries its catalogue and its number of arguments in its type, so raising a
// key with the wrong number of arguments does not compile, and every key the code can
// raise is one that has an English text (see catalogs/*.def).
#pragma once

#include "ql_types/platform/BaseMsgID.hpp"

namespace resource_core {

/// A key of a compiled-in catalogue that takes N arguments.
template <int N>
struct MsgKey {
  const char* catalog;
  const char* key;
};

/// The message of a typed key with its arguments; the count is checked at compile time.
template <int N, class... A>
BaseMsgID makeMessage(const MsgKey<N>& key, A&&... args) {
  static_assert(sizeof...(A) == N, "wrong number of arguments for this message key");
  return BaseMsgID::make(key.catalog, key.key, std::forward<A>(args)...);
}

}  // namespace resource_core

namespace qlmsg {

#define QL_MESSAGE(KEY, N, TEXT) inline constexpr resource_core::MsgKey<N> KEY{QL_CATALOG_NAME, #KEY};

/// "QuillonTypes:general": data types, structures and buses.
namespace general {
#define QL_CATALOG_NAME "QuillonTypes:general"
#include "ql_types/platform/catalogs/QuillonTypes_general.def"
#undef QL_CATALOG_NAME
}  // namespace general

/// "QuillonTypes:Unit": units, the unit database and the unit table.
namespace unit {
#define QL_CATALOG_NAME "QuillonTypes:Unit"
#include "ql_types/platform/catalogs/QuillonTypes_Unit.def"
#undef QL_CATALOG_NAME
}  // namespace unit

/// "QuillonTypes:Dimensions": symbolic dimensions and their constraints.
namespace dimensions {
#define QL_CATALOG_NAME "QuillonTypes:Dimensions"
#include "ql_types/platform/catalogs/QuillonTypes_Dimensions.def"
#undef QL_CATALOG_NAME
}  // namespace dimensions

/// "QL:symbolic": the symbolic-expression library.
namespace symbolic {
#define QL_CATALOG_NAME "QL:symbolic"
#include "ql_types/platform/catalogs/QL_symbolic.def"
#undef QL_CATALOG_NAME
}  // namespace symbolic

/// "ql_services:core": the host service stand-ins.
namespace services {
#define QL_CATALOG_NAME "ql_services:core"
#include "ql_types/platform/catalogs/ql_services.def"
#undef QL_CATALOG_NAME
}  // namespace services

#undef QL_MESSAGE

}  // namespace qlmsg
