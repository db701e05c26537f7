// Every public header of ql_types, for clients that want the whole library.
#pragma once

#include "ql_types/Version.hpp"

#include "ql_types/platform/BaseMsgID.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/HostArray.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/Memory.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/QlFeature.hpp"
#include "ql_types/platform/Text.hpp"
