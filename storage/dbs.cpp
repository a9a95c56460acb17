#include "storage/dbs.h"

#include <memory>
#include <new>
#include <utility>

#include "capture/capture_app.h"
#include "platform/framework/file_exception.h"
#include "record/zeb_file.h"
#include "storage/file_search_info.h"
#include "storage/recycling.h"
#include "storage/zeb_database.h"

using namespace zebx;

namespace {

using MakingGetter = CString (CHddObj::*)(const CString&, CTime);
using FindingGetter = CString (CHddObj::*)(const CString&, CTime) const;

// The open database, borrowed; null when there is none.
CZebDatabase* Database() {
  return GetCaptureApp().GetDatabase();
}

// Inside of the message of a deleted day, which nothing may pull the list from under.
bool IsChoosing() {
  const CZebDatabase* database = Database();
  return database != nullptr && database->IsChoosing();
}

// What `get` answers for the disk; an empty text without one.
template <typename Get>
int AnswerText(CString* text, CHddObj* disk, Get get) {
  if (text == nullptr) return 0;
  *text = disk != nullptr ? get(*disk) : CString();
  return 1;
}

template <typename Get>
int AnswerOfWorkHDD(CString* text, Get get) {
  const CZebDatabase* database = Database();
  return database != nullptr ? AnswerText(text, database->GetWorkHDD(), get) : 0;
}

template <typename Get>
int AnswerOfHDD(CString* text, int index, Get get) {
  const CZebDatabase* database = Database();
  return database != nullptr ? AnswerText(text, database->GetHDD(index), get) : 0;
}

int GetDirectory(CString* directory, MakingGetter getter, const CString& name, CTime time) {
  return AnswerOfWorkHDD(directory, [&](CHddObj& disk) { return (disk.*getter)(name, time); });
}

int FindDirectory(CString* directory, FindingGetter getter, const CString& name, CTime time,
                  int index) {
  return AnswerOfHDD(directory, index,
                     [&](const CHddObj& disk) { return (disk.*getter)(name, time); });
}

using Creator = std::unique_ptr<CZebFile> (CZebDatabase::*)(CZebFileInfo&) const;

int Create(CZebFile** file, CZebFileInfo* header, Creator creator) {
  if (file == nullptr) return 0;
  *file = nullptr;
  const CZebDatabase* database = Database();
  if (database == nullptr || header == nullptr) return 0;
  *file = (database->*creator)(*header).release();
  return *file != nullptr ? 1 : 0;
}

}  // namespace

// Texts come by value, as the interface is given.
// NOLINTBEGIN(performance-unnecessary-value-param)

int dbsOpenDatabase(CString data_directory, CString database_file, CString host_name) {
  CCaptureApp& app = GetCaptureApp();
  if (app.IsInitialized() == 0 || IsChoosing()) return 0;
  dbsCloseDatabase();
  auto database = std::make_unique<CZebDatabase>();
  if (database->Open(data_directory, app.GetHostWindow(), database_file, host_name) == 0) return 0;
  app.SetDatabase(database.release());
  return 1;
}

void dbsCloseDatabase() {
  if (IsChoosing()) return;
  const std::unique_ptr<CZebDatabase> database(Database());
  GetCaptureApp().SetDatabase(nullptr);
}

int dbsSaveDatabase() {
  CZebDatabase* database = Database();
  return database != nullptr ? database->Save() : 0;
}

int dbsAddHDD(tag_HDDPARAM* param) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->AddHDD(param) : 0;
}

int dbsChangeBaseDir(int, tag_HDDPARAM* param) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->ChangeBaseDir(param) : 0;
}

int dbsRemoveHDDIndex(int index) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->RemoveHDD(index) : 0;
}

int dbsRemoveHDDName(CString path) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->RemoveHDD(path) : 0;
}

int dbsFindHddIndex(CString database_name) {
  const CZebDatabase* database = Database();
  return database != nullptr ? database->FindHDD(database_name) : -1;
}

int dbsGetDbsName(int index, CString* database_name) {
  return AnswerOfHDD(database_name, index, [](const CHddObj& disk) { return disk.GetDbsName(); });
}

int dbsGetBaseDir(int index, CString* directory) {
  return AnswerOfHDD(directory, index, [](const CHddObj& disk) { return disk.GetBaseDir(); });
}

int dbsGetHddNum() {
  const CZebDatabase* database = Database();
  return database != nullptr ? static_cast<int>(database->GetHDDs().GetCount()) : 0;
}

int dbsGetHddParam(int index, tag_HDDPARAM* param) {
  const CZebDatabase* database = Database();
  const CHddObj* disk = database != nullptr ? database->GetHDD(index) : nullptr;
  if (disk == nullptr || param == nullptr) return 0;
  param->m_reserved_mb = disk->GetReservedSpace();
  param->m_recycle = disk->IsRecycle();
  param->m_path = disk->GetBaseDir();
  param->m_database_name = disk->GetDbsName();
  param->m_alarm_when_space_not_enough = disk->IsAlarmWhenSpaceNotEnough();
  param->m_alarm_sound = disk->GetAlarmSound();
  return 1;
}

int dbsGetHDDInfo(CHddObj** disk, CString database_name) {
  const CZebDatabase* database = Database();
  if (database == nullptr || disk == nullptr) return 0;
  *disk = database->GetHDD(database->FindHDD(database_name));
  return 1;
}

int dbsGetHDDList(CObList* disks) {
  const CZebDatabase* database = Database();
  if (database == nullptr || disks == nullptr) return 0;
  for (CObject* entry : database->GetHDDs()) {
    auto& disk = static_cast<CHddObj&>(*entry);
    disk.Refresh();
    auto copy = std::make_unique<CHddObj>();
    *copy = disk;
    disks->AddTail(copy.get());
    static_cast<void>(copy.release());  // the caller's now
  }
  return 1;
}

int dbsGetHddSpace(int index, DWORD* total, DWORD* used, DWORD* free) {
  const CZebDatabase* database = Database();
  if (database == nullptr || total == nullptr || used == nullptr || free == nullptr) return 0;
  return database->GetHDDSpace(index, *total, *used, *free);
}

int dbsGetWorkHDD(CString* database_name, CString* directory) {
  const CZebDatabase* database = Database();
  const CHddObj* disk = database != nullptr ? database->GetWorkHDD() : nullptr;
  if (disk == nullptr || database_name == nullptr || directory == nullptr) return -1;
  *database_name = disk->GetDbsName();
  *directory = disk->GetBaseDir();
  return 0;
}

int dbsGetWorkHddFreeSpace() {
  const CZebDatabase* database = Database();
  return database != nullptr ? static_cast<int>(database->GetWorkHDDFreeSpace()) : -1;
}

int dbsCheckWorkHDD(DWORD* free) {
  const CZebDatabase* database = Database();
  return database != nullptr && free != nullptr ? database->CheckWorkHDD(*free) : kWorkingDiskNone;
}

int dbsChangeWorkDir() {
  CZebDatabase* database = Database();
  return database != nullptr ? database->ChangeWorkDir() : kNoDiskInList;
}

DWORD dbsGetOnceDelSpace() {
  const CZebDatabase* database = Database();
  return database != nullptr ? database->GetOnceDelSpace() : 0;
}

int dbsSetOnceDelSpace(DWORD space) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->SetOnceDelSpace(space) : 0;
}

int dbsCreateZebFile(CZebFile** file, CZebFileInfo* header) {
  return Create(file, header, &CZebDatabase::CreateZebFile);
}

int dbsCreateZebAlarmFile(CZebFile** file, CZebFileInfo* header) {
  return Create(file, header, &CZebDatabase::CreateZebAlarmFile);
}

int dbsCloseZebFile(CZebFile* file) {
  if (file == nullptr) return 0;
  const std::unique_ptr<CZebFile> owned(file);
  try {
    owned->Close();
    return 1;
  } catch (const CFileException&) {
    return 0;
  } catch (const std::bad_alloc&) {
    return 0;
  }
}

int dbsGetVideoDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetVideoDir, name, time);
}

int dbsGetAlarmDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetAlarmDir, name, time);
}

int dbsGetClipDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetClipDir, name, time);
}

int dbsGetPictureDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetPictureDir, name, time);
}

int dbsGetLogDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetLogDir, name, time);
}

int dbsGetFaceDir(CString* directory, CString name, CTime time) {
  return GetDirectory(directory, &CHddObj::GetFaceDir, name, time);
}

int dbsGetDir(CString* directory, CString host, CString camera, tag_ZEBFILETYPE type, CTime time) {
  return AnswerOfWorkHDD(directory,
                         [&](CHddObj& disk) { return disk.GetDir(host, camera, type, time); });
}

int dbsGetRemoteDir(CString* directory) {
  return AnswerOfWorkHDD(directory, [](CHddObj& disk) { return disk.GetRemoteVideoDir(); });
}

int dbsGetVideoDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetVideoDirInfo, name, time, index);
}

int dbsGetAlarmDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetAlarmDirInfo, name, time, index);
}

int dbsGetClipDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetClipDirInfo, name, time, index);
}

int dbsGetPictureDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetPictureDirInfo, name, time, index);
}

int dbsGetLogDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetLogDirInfo, name, time, index);
}

int dbsGetFaceDirInfo(CString* directory, CString name, CTime time, int index) {
  return FindDirectory(directory, &CHddObj::GetFaceDirInfo, name, time, index);
}

int dbsGetHostName(CString* name) {
  const CZebDatabase* database = Database();
  if (database == nullptr || name == nullptr) return 0;
  *name = database->GetHostName();
  return 1;
}

int dbsSearchFile(CFileSearchInfo* info) {
  CZebDatabase* database = Database();
  return database != nullptr ? database->SearchFile(info) : 0;
}

// NOLINTEND(performance-unnecessary-value-param)
