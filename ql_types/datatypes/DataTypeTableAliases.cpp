// The alias and storage operations of the data type table.
#include "ql_types/datatypes/AliasDataType.hpp"
#include "ql_types/datatypes/DataTypeTable.hpp"

namespace QLTypeSys {

namespace msg = qlmsg::general;

int DataTypeTable::registerAliasDataType(const char* name, DataTypeSource source, int idAliasedTo,
                                         const char* blockPath) {
  validateDataTypeName(name);
  if (!isDataTypeIdValid(idAliasedTo)) qlRaise(msg::UndefinedDataTypeToBeAliasedTo, name, idAliasedTo);
  DataType* previous = getDataType(name);
  if (previous && isDataTypeIdValid(previous->getId()) && shortCircuitRegistration(source)) {
    // The old entry's target is not compared: a repeat with another target returns the old id.
    verifyDataTypeSourcesMatch(source, previous->getId());
    return previous->getId();
  }
  // A replaced entry hands its id to the new alias, so a target that is that entry, or leads to it, would
  // become a loop: refuse it as setDataTypeIdAliasedTo does, before anything changes.
  if (previous) {
    const int replaced = previous->getId();
    if (idAliasedTo == replaced || alreadyAliasedToDirectlyOrIndirectly(idAliasedTo, replaced))
      qlRaise(msg::DataTypeAliasLoop, name, getDataType(idAliasedTo)->getName());
  }
  const DataType* target = getDataType(idAliasedTo);
  auto* alias =
      new AliasDataType(getNumDataTypes() - 1, name, source, target, getDataType(target->getIdAliasedThruTo()));
  return finishRegistration(alias, previous, blockPath);
}

void DataTypeTable::setDataTypeIdAliasedTo(int id, int idAliasedTo) {
  DataType* type = getDataType(id);
  if (!isDataTypeIdValid(idAliasedTo)) qlRaise(msg::UndefinedDataTypeToBeAliasedTo, type->getName(), idAliasedTo);
  const int current = type->getIdAliasedTo();
  if (current == idAliasedTo) return;
  if (current != -10)
    qlRaise(msg::InconsistentDataTypeIdAliasedTo, type->getName(), getDataType(idAliasedTo)->getName(),
            getDataType(current)->getName());
  if (type->getAliasedToLocked()) qlRaise(msg::CannotSetAliasForDefinedType, type->getName());
  // A type aliased to itself would point at the object about to be deleted; refuse it as a loop.
  if (id == idAliasedTo || alreadyAliasedToDirectlyOrIndirectly(idAliasedTo, id))
    qlRaise(msg::DataTypeAliasLoop, type->getName(), getDataType(idAliasedTo)->getName());

  const DataType* target = getDataType(idAliasedTo);
  auto* alias = new AliasDataType(type, target, getDataType(target->getIdAliasedThruTo()));
  types_[static_cast<std::size_t>(id + 1)] = alias;
  for (DataType* t : types_) {
    if (t->getIdAliasedTo() != t->getId() && t->getIdAliasedTo() == id) t->updateAliasedToType(alias);
    // Kept: existing aliases of id now end at an alias, and report id as their through type.
    if (t->getIdAliasedThruTo() == id) t->updateAliasedThruToType(alias);
  }
  delete type;
}

bool DataTypeTable::alreadyAliasedToDirectlyOrIndirectly(int start, int id) const {
  int x = start;
  while (x != -10) {
    const int a = getDataType(x)->getIdAliasedTo();
    if (a == -10) return false;
    if (a == id) return true;
    x = a;
  }
  return false;
}

void DataTypeTable::setDataTypeStorageId(int id, int storageId) {
  DataType* type = getDataType(id);
  if (type->getIdAliasedTo() != -10) qlRaise(msg::CannotSetDataTypeStorageIdOfAlias, type->getName());
  // An id with no entry (past the table, or below -1) has no name to show: its number stands in. Such an id
  // is refused like any non-built-in, before anything reads an entry through it.
  if (storageId >= kNumBuiltinTypes || storageId < -1)
    qlRaise(msg::IllegalDataTypeToBeStorageId, type->getName(),
            isDataTypeIdValid(storageId) ? getDataType(storageId)->getName() : std::to_string(storageId));
  const int current = type->getStorageId();
  if (current == id) {  // the type's own id marks the storage as unset
    type->setStorageId(storageId);
    type->setAliasedToLocked(true);
  } else if (current != storageId) {
    qlRaise(msg::InconsistentDataTypeStorageId, type->getName(), getDataType(storageId)->getName(),
            getDataType(current)->getName());
  }
}

int DataTypeTable::getDataTypeIdAliasedTo(int id) const { return id == -10 ? -10 : getDataType(id)->getIdAliasedTo(); }

int DataTypeTable::getDTypeIdAliasedThruTo(int id) const {
  return id == -10 ? -10 : getDataType(id)->getIdAliasedThruTo();
}

int DataTypeTable::getDataTypeIdAliasedThruToWithCheckForBuiltInDataType(int id) const {
  if (id == -10 || checkForBuiltInDataType(id)) return id;
  return getDataType(id)->getIdAliasedThruTo();
}

DataType* DataTypeTable::getDataTypeAliasedThruTo(int id) {
  checkDataTypeId(id);
  return getDataType(getDataType(id)->getIdAliasedThruTo());
}

const DataType* DataTypeTable::getDataTypeAliasedThruTo(int id) const {
  return const_cast<DataTypeTable*>(this)->getDataTypeAliasedThruTo(id);
}

int DataTypeTable::getDataTypeIdCommonAncestor(int a, int b) const {
  if (a == b) return a;
  // Unknown ids have no ancestor; the walks below would leave the vector.
  if (!isDataTypeIdValid(a) || !isDataTypeIdValid(b)) return -10;
  const int thru = getDataType(a)->getIdAliasedThruTo();
  if (thru != getDataType(b)->getIdAliasedThruTo()) return -10;
  if (thru == b) return b;
  if (thru == a) return a;
  for (int x = a; x != -10; x = getDataType(x)->getIdAliasedTo()) getDataType(x)->setVisitFlag(true);
  int result = -10;
  for (int x = b; x != -10; x = getDataType(x)->getIdAliasedTo())
    if (getDataType(x)->getVisitFlag()) {
      result = x;
      break;
    }
  for (int x = a; x != -10; x = getDataType(x)->getIdAliasedTo()) getDataType(x)->setVisitFlag(false);
  return result;
}

}  // namespace QLTypeSys
