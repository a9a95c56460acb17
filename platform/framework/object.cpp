#include "platform/framework/object.h"

const CRuntimeClass CObject::classCObject = {"CObject", nullptr};

CObject::~CObject() = default;

const CRuntimeClass* CObject::GetRuntimeClass() const {
  return &classCObject;
}

void CObject::Serialize(CArchive&) {}

IMPLEMENT_DYNAMIC(CObList, CObject)

CObList::~CObList() = default;
