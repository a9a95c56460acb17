// The storage functions that hosts call: the database with its disks, directories, recordings and
// searches.
//
// Results are 1 for success and 0 for failure unless said otherwise. Without an open database, and
// for a null pointer, every function fails, with -1 where that is its failure, and leaves its
// outputs alone. A disk's index is its position in the list, counted from 0; its database name
// stands with its drive, as in ZebDatabase(d:\). Paths are library paths. Space is in MB (2^20
// bytes). One thread at a time.
#pragma once

#include "platform/framework/export.h"
#include "platform/framework/object.h"
#include "platform/framework/time.h"
#include "platform/framework/types.h"
#include "storage/hdd_obj.h"

class CFileSearchInfo;
class CZebFile;
class CZebFileInfo;

extern "C" {

// Opens the database of this recorder, after closing one that is open. The disks come from the
// database file; without any, a disk is made in the directory `database` of the data directory,
// which must exist. 0 also while the library is not initialised (zebxInitZebx), the open database
// staying open.
ZEBX_API int dbsOpenDatabase(CString data_directory, CString database_file, CString host_name);
// Writes the database file and closes. Files that were created are the host's to close.
ZEBX_API void dbsCloseDatabase();
// Writes the database file. 0 also without disks. A save that fails leaves the file as it was. Mode
// and owner of the file stay, and where a link to it stands, so does that.
ZEBX_API int dbsSaveDatabase();

// Adds a disk; its path is lower-cased in the caller's record. The first disk of an empty list
// becomes the working disk. 0 for a drive that has a disk already, or is neither fixed nor a
// network's, and when the directory cannot be made.
ZEBX_API int dbsAddHDD(tag_HDDPARAM* param);
// Sets up the disk on the same drive anew; the index is not used. The database name is taken
// without its drive, though dbsGetHddParam gives it with it.
ZEBX_API int dbsChangeBaseDir(int index, tag_HDDPARAM* param);
// Take a disk out of the list; the file tree stays. Neither chooses another working disk. By index,
// 0 is also the answer when the only disk was the working disk, but the list is empty then.
ZEBX_API int dbsRemoveHDDIndex(int index);
ZEBX_API int dbsRemoveHDDName(CString path);

// The index of the disk with this name, matching case; -1 when there is none.
ZEBX_API int dbsFindHddIndex(CString database_name);
// Empty texts for an index outside of the list, still 1.
ZEBX_API int dbsGetDbsName(int index, CString* database_name);
ZEBX_API int dbsGetBaseDir(int index, CString* directory);
ZEBX_API int dbsGetHddNum();
ZEBX_API int dbsGetHddParam(int index, tag_HDDPARAM* param);
// The database's own disk, valid until it is removed or the database is closed; null when there is
// none of this name, still 1.
ZEBX_API int dbsGetHDDInfo(CHddObj** disk, CString database_name);
// Reloads the days of every disk and appends a copy of each disk, owned by the caller, with its
// directory, name and days.
ZEBX_API int dbsGetHDDList(CObList* disks);
// Only the first disk, index 0, is ever answered.
ZEBX_API int dbsGetHddSpace(int index, DWORD* total, DWORD* used, DWORD* free);

// The working disk. 0, or -1 when there is none.
ZEBX_API int dbsGetWorkHDD(CString* database_name, CString* directory);
// Free on its drive; 0 when not known, -1 without a database.
ZEBX_API int dbsGetWorkHddFreeSpace();
// Judges it: 0 enough space, 1 below its reserved space, 2 below its alarm space, -1 no such disk.
ZEBX_API int dbsCheckWorkHDD(DWORD* free);
// Chooses a disk with room, or deletes the oldest day of the disks that recycle and chooses the
// disk where that made room; each deleted day is sent to the host window (ZEBX_MSG_DATE_DELETED).
// Inside of that message the disk list stays as it is: opening, adding, removing and changing a
// disk answer 0, and closing the database does nothing. Everything else may be called. 0, 1 with no
// working disk any more when nothing could be done, -1 without disks.
ZEBX_API int dbsChangeWorkDir();
// Only kept: no function reads it. Below 50 is refused.
ZEBX_API DWORD dbsGetOnceDelSpace();
ZEBX_API int dbsSetOnceDelSpace(DWORD space);

// Creates a recording on the working disk in today's directory of the header's host, named after
// its camera and begin time; the path is stored in the header. Give the file back to
// dbsCloseZebFile. On failure `*file` is null.
ZEBX_API int dbsCreateZebFile(CZebFile** file, CZebFileInfo* header);
ZEBX_API int dbsCreateZebAlarmFile(CZebFile** file, CZebFileInfo* header);
// Finishes the file and destroys the object, whether a database is open or not. 0 when the disk
// refuses the last bytes, without which the recording is not finished; the object is destroyed all
// the same.
ZEBX_API int dbsCloseZebFile(CZebFile* file);

// A directory of the working disk for one kind of files, made when it does not exist; time 0 is
// now. Empty when there is no working disk or it cannot be made, still 1.
ZEBX_API int dbsGetVideoDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetAlarmDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetClipDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetPictureDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetLogDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetFaceDir(CString* directory, CString name, CTime time);
ZEBX_API int dbsGetDir(CString* directory, CString host, CString camera, tag_ZEBFILETYPE type,
                       CTime time);
// Today's directory for recordings from remote sources.
ZEBX_API int dbsGetRemoteDir(CString* directory);
// The same of the disk at `index`, when it exists; nothing is made. Else empty, still 1.
ZEBX_API int dbsGetVideoDirInfo(CString* directory, CString name, CTime time, int index);
ZEBX_API int dbsGetAlarmDirInfo(CString* directory, CString name, CTime time, int index);
ZEBX_API int dbsGetClipDirInfo(CString* directory, CString name, CTime time, int index);
ZEBX_API int dbsGetPictureDirInfo(CString* directory, CString name, CTime time, int index);
ZEBX_API int dbsGetLogDirInfo(CString* directory, CString name, CTime time, int index);
ZEBX_API int dbsGetFaceDirInfo(CString* directory, CString name, CTime time, int index);

// The name given to dbsOpenDatabase.
ZEBX_API int dbsGetHostName(CString* name);

// Appends what the disks hold of the criteria in `info`, disk by disk. No match is no failure.
ZEBX_API int dbsSearchFile(CFileSearchInfo* info);
}
