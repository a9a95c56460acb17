// The base object with its run-time class record, and the list of borrowed objects.
#pragma once

#include <cstddef>
#include <list>

#include "platform/framework/export.h"

class CArchive;
class CObject;

// What a class is called and derives from, for tests of an object's class at run time.
struct CRuntimeClass {
  const char* m_name;
  const CRuntimeClass* m_base;  // null for CObject

  // True for the class itself and for everything it derives from.
  bool IsDerivedFrom(const CRuntimeClass* other) const {
    for (const CRuntimeClass* record = this; record != nullptr; record = record->m_base) {
      if (record == other) return true;
    }
    return false;
  }
};

// Base of every object that travels in a CObList or is told apart at run time.
class ZEBX_API CObject {
 public:
  CObject() = default;
  virtual ~CObject();

  virtual const CRuntimeClass* GetRuntimeClass() const;
  bool IsKindOf(const CRuntimeClass* record) const {
    return GetRuntimeClass()->IsDerivedFrom(record);
  }
  // Stores the object into the archive or loads it from there; nothing, of an object without a form
  // of its own.
  virtual void Serialize(CArchive& archive);

  static const CRuntimeClass classCObject;

 protected:
  CObject(const CObject&) = default;
  CObject& operator=(const CObject&) = default;
};

// Declares the class record in a class body; the matching IMPLEMENT_DYNAMIC stands in its source.
#define DECLARE_DYNAMIC(class_name)             \
 public:                                        \
  static const CRuntimeClass class##class_name; \
  const CRuntimeClass* GetRuntimeClass() const override;

#define IMPLEMENT_DYNAMIC(class_name, base_name)                                                   \
  const CRuntimeClass class_name::class##class_name = {#class_name, &base_name::class##base_name}; \
  const CRuntimeClass* class_name::GetRuntimeClass() const {                                       \
    return &class##class_name;                                                                     \
  }

#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

// An ordered list of borrowed objects. It never destroys what it points to; an element may be null.
class ZEBX_API CObList : public CObject {
  DECLARE_DYNAMIC(CObList)

 public:
  CObList() = default;
  CObList(const CObList&) = default;
  CObList& operator=(const CObList&) = default;
  ~CObList() override;

  void AddHead(CObject* object) { m_objects.push_front(object); }
  void AddTail(CObject* object) { m_objects.push_back(object); }
  // The list must not be empty.
  CObject* GetHead() const { return m_objects.front(); }
  CObject* GetTail() const { return m_objects.back(); }
  CObject* RemoveHead() {
    CObject* head = m_objects.front();
    m_objects.pop_front();
    return head;
  }
  // Takes out the entry that an iterator of this list stands at.
  void RemoveAt(std::list<CObject*>::const_iterator entry) { m_objects.erase(entry); }
  void RemoveAll() { m_objects.clear(); }
  void Swap(CObList& other) noexcept { m_objects.swap(other.m_objects); }
  bool IsEmpty() const { return m_objects.empty(); }
  std::size_t GetCount() const { return m_objects.size(); }
  auto begin() const { return m_objects.begin(); }
  auto end() const { return m_objects.end(); }

 private:
  std::list<CObject*> m_objects;
};
