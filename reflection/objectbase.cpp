#include "reflection/objectbase.h"

TypeInfo ObjectBase::mUniqueTypeInfo("ObjectBase", nullptr, 0);
