// The client's hook into a data type table: it sees every new registration and every reset.
#pragma once

namespace QLTypeSys {

class DataType;

/// Held by the table through boost::shared_ptr. Throw from dataTypeRegistered to refuse a type.
class ClientDataTypeCheckCallback {
 public:
  virtual ~ClientDataTypeCheckCallback() = default;
  /// Called after a new type joined the table; throwing removes it again.
  virtual void dataTypeRegistered(DataType* type, const char* blockPath) = 0;
  /// Called at the end of resetToBuiltin.
  virtual void tableReset() = 0;
};

}  // namespace QLTypeSys
