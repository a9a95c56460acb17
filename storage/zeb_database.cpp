#include "storage/zeb_database.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "record/zeb_file.h"
#include "storage/disk_path.h"
#include "storage/file_search_info.h"
#include "storage/hdd_obj.h"
#include "storage/recording_name.h"
#include "storage/recycling.h"

using namespace zebx;

IMPLEMENT_DYNAMIC(CZebDatabase, CObject)

namespace {

constexpr DWORD kDefaultOnceDeleteMb = 100;
constexpr DWORD kMinOnceDeleteMb = 50;

// A host may choose once more from within a message.
class WhileChoosing {
 public:
  explicit WhileChoosing(bool& is_choosing)
      : m_is_choosing(is_choosing), m_before(std::exchange(is_choosing, true)) {}
  ~WhileChoosing() { m_is_choosing = m_before; }
  WhileChoosing(const WhileChoosing&) = delete;
  WhileChoosing& operator=(const WhileChoosing&) = delete;

 private:
  bool& m_is_choosing;
  const bool m_before;
};

// Opens the recording for writing in the directory.
std::unique_ptr<CZebFile> CreateRecording(const CString& directory, const CString& name,
                                          CZebFileInfo& info) {
  if (directory.empty()) return nullptr;
  info.SetFileName(directory + "\\" + name);
  auto file = std::make_unique<CZebFile>();
  return file->Open(&info, kZebFileWrite) != 0 ? std::move(file) : nullptr;
}

}  // namespace

CZebDatabase::CZebDatabase() : m_once_delete_mb(kDefaultOnceDeleteMb) {}

CZebDatabase::~CZebDatabase() {
  Close();
}

void CZebDatabase::Serialize(CArchive&) {}

int CZebDatabase::SearchFile(CFileSearchInfo* info) {
  if (info == nullptr) return 0;
  if (m_last_search != nullptr) {
    if (*m_last_search == *info) {
      *info = *m_last_search;
      return 1;
    }
    m_last_search.reset();
  }
  for (CObject* disk : m_disks) static_cast<CHddObj*>(disk)->SearchFile(info);
  return 1;
}

int CZebDatabase::AddHDD(tag_HDDPARAM* param) {
  if (param == nullptr || m_is_choosing) return 0;
  param->m_path = MakeLower(param->m_path);
  if (FindOnDrive(param->m_path) != nullptr || AppendDisk(param) == nullptr) return 0;
  if (m_disks.GetCount() == 1) m_working_disk = DriveRoot(param->m_path);
  return 1;
}

CHddObj* CZebDatabase::AppendDisk(tag_HDDPARAM* param) {
  auto disk = std::make_unique<CHddObj>();
  if (disk->Create(param) == 0) return nullptr;
  m_disks.AddTail(disk.get());
  return disk.release();
}

int CZebDatabase::ChangeBaseDir(tag_HDDPARAM* param) {
  CHddObj* disk = param != nullptr && !m_is_choosing ? FindOnDrive(param->m_path) : nullptr;
  return disk != nullptr ? disk->ChangeBaseDir(param) : 0;
}

int CZebDatabase::RemoveHDD(int index) {
  auto disk = TakeOut(GetHDD(index));
  if (disk == nullptr) return 0;
  if (!m_disks.IsEmpty() || (*disk == m_working_disk) == 0) return 1;
  m_refused_disk = std::move(disk);
  return 0;
}

int CZebDatabase::RemoveHDD(const CString& path) {
  return TakeOut(FindOnDrive(path)) != nullptr ? 1 : 0;
}

std::unique_ptr<CHddObj> CZebDatabase::TakeOut(const CHddObj* disk) {
  if (m_is_choosing) return nullptr;
  const auto entry = std::find(m_disks.begin(), m_disks.end(), disk);
  if (entry == m_disks.end()) return nullptr;
  std::unique_ptr<CHddObj> taken(static_cast<CHddObj*>(*entry));
  m_disks.RemoveAt(entry);
  return taken;
}

CHddObj* CZebDatabase::GetHDD(int index) const {
  if (index < 0 || static_cast<std::size_t>(index) >= m_disks.GetCount()) return nullptr;
  return static_cast<CHddObj*>(*std::next(m_disks.begin(), index));
}

CHddObj* CZebDatabase::GetWorkHDD() const {
  return FindOnDrive(m_working_disk);
}

CHddObj* CZebDatabase::FindOnDrive(const CString& path) const {
  return FindWorkingDisk(m_disks, path);
}

int CZebDatabase::FindHDD(const CString& name) const {
  int index = 0;
  for (const CObject* disk : m_disks) {
    if (static_cast<const CHddObj*>(disk)->GetDbsName() == name) return index;
    ++index;
  }
  return -1;
}

int CZebDatabase::GetHDDSpace(int index, DWORD& total, DWORD& used, DWORD& free) const {
  const CHddObj* disk = index == 0 ? GetHDD(0) : nullptr;
  return disk != nullptr ? disk->GetHDDSpace(total, used, free) : 0;
}

DWORD CZebDatabase::GetWorkHDDFreeSpace() const {
  DWORD total = 0, used = 0, free = 0;
  if (DriveRoot(m_working_disk).empty()) return 0;
  return CHddObj::GetHDDSpace(m_working_disk, total, used, free) != 0 ? free : 0;
}

int CZebDatabase::CheckWorkHDD(DWORD& free_mb) const {
  return CheckWorkingDisk(m_disks, m_working_disk, free_mb);
}

int CZebDatabase::ChangeWorkDir() {
  const WhileChoosing while_choosing(m_is_choosing);
  return ChooseWorkingDisk(m_disks, m_host_window, m_working_disk);
}

int CZebDatabase::SetOnceDelSpace(DWORD space_mb) {
  if (space_mb < kMinOnceDeleteMb) return 0;
  m_once_delete_mb = space_mb;
  return 1;
}

std::unique_ptr<CZebFile> CZebDatabase::CreateZebFile(CZebFileInfo& info) const {
  CHddObj* disk = GetWorkHDD();
  if (disk == nullptr) return nullptr;
  const CString directory = disk->GetVideoDir(info.GetHostName(), CTime());
  return CreateRecording(directory, RecordingName(info), info);
}

std::unique_ptr<CZebFile> CZebDatabase::CreateZebAlarmFile(CZebFileInfo& info) const {
  CHddObj* disk = GetWorkHDD();
  if (disk == nullptr) return nullptr;
  return CreateRecording(disk->GetAlarmDir(info.GetHostName(), CTime()), AlarmRecordingName(info),
                         info);
}
