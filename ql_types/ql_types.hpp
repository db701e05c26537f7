// Every public header of ql_types, for clients that want the whole library.
#pragma once

#include "ql_types/Version.hpp"

#include "ql_types/fixpt/fxpDataTypeProp.hpp"
#include "ql_types/fixpt/fxpDataTypeText.hpp"
#include "ql_types/fixpt/fxpModes.hpp"

#include "ql_types/datatypes/AliasDataType.hpp"
#include "ql_types/datatypes/ClientDataTypeCheckCallback.hpp"
#include "ql_types/datatypes/DataType.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"
#include "ql_types/datatypes/StructDataType.hpp"
#include "ql_types/datatypes/StructElementAccess.hpp"

#include "ql_types/convert/BuiltinConversion.hpp"
#include "ql_types/convert/HostArrayBridge.hpp"

#include "ql_types/platform/BaseMsgID.hpp"
#include "ql_types/platform/Diagnostic.hpp"
#include "ql_types/platform/Filesystem.hpp"
#include "ql_types/platform/HostArray.hpp"
#include "ql_types/platform/IException.hpp"
#include "ql_types/platform/Memory.hpp"
#include "ql_types/platform/MessageKeys.hpp"
#include "ql_types/platform/QlFeature.hpp"
#include "ql_types/platform/Text.hpp"

#include "ql_types/units/AbstractUnit.hpp"
#include "ql_types/units/ConversionFactor.hpp"
#include "ql_types/units/ConversionFactorFactory.hpp"
#include "ql_types/units/ConversionFactorImpl.hpp"
#include "ql_types/units/ConversionFactorType.hpp"
#include "ql_types/units/Exponent.hpp"
#include "ql_types/units/Unit.hpp"
#include "ql_types/units/UnitAliasInfo.hpp"
#include "ql_types/units/UnitBase.hpp"
#include "ql_types/units/UnitExprParser.hpp"
#include "ql_types/units/UnitExprPartial.hpp"
#include "ql_types/units/UnitFactory.hpp"
#include "ql_types/units/UnitNumericInfoForConversions.hpp"
#include "ql_types/units/UnitPrefix.hpp"

#include "ql_types/unitdb/UnitDatabase.hpp"
#include "ql_types/unitdb/UnitSystem.hpp"

#include "ql_types/symbolic/SymbolicExpr.hpp"
#include "ql_types/symbolic/SymbolicExprCopy.hpp"
#include "ql_types/symbolic/SymbolicExprFactorDivision.hpp"
#include "ql_types/symbolic/SymbolicExprParser.hpp"
#include "ql_types/symbolic/SymbolicExprPrinter.hpp"
#include "ql_types/symbolic/SymbolicExprSimplify.hpp"
#include "ql_types/symbolic/SymbolicExprSymbols.hpp"
#include "ql_types/symbolic/SymbolicExprTable.hpp"

#include "ql_types/dimensions/SymbolicDimsConstraints.hpp"
#include "ql_types/dimensions/SymbolicDimsTable.hpp"
#include "ql_types/dimensions/symbolicdims.hpp"
