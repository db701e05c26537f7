// ConversionFactorType: how a factor's text in the unit database is read. The values are the database's.
#pragma once

namespace QLTypeSys {

/// The integer stored beside a factor's text; any other value reads as unity.
enum ConversionFactorType {
  DoubleFactor = 1,            ///< "value"
  RationalFactor = 2,          ///< "num,den", read as "num,den,0"
  ScaledRationalFactor = 3,    ///< "num,den,exponent"
  RationalAffineFactor = 4,    ///< "scaleNum,scaleDen,offsetNum,offsetDen"
  DoubleAffineFactor = 5,      ///< "scale,offset"
  DoubleReciprocalFactor = 6,  ///< "value"
};

}  // namespace QLTypeSys
