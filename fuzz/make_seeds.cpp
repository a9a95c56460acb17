// Writes small files of every kind that a fuzz target reads, whole and damaged, for it to start
// from.
//
// usage: make_seeds DIRECTORY
//
// The seeds of a target lie in the directory of its name.
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "capture/mask_info.h"
#include "capture/mask_list.h"
#include "capture/video_data.h"
#include "fuzz/sparse_disk.h"
#include "image/dib_obj.h"
#include "image/image.h"
#include "platform/framework/archive.h"
#include "platform/noxcodec/software/speech_encoder.h"
#include "platform/noxcodec/software/video_encoder.h"
#include "platform/os/files/drives.h"
#include "platform/os/graphics/bitmap_resources.h"
#include "platform/zebdev/software/street_scene.h"
#include "record/mox_file.h"
#include "storage/file_search_info.h"
#include "storage/zeb_database.h"
#include "tests/support/recording_fixture.h"

using namespace zebx;

namespace {

namespace fs = std::filesystem;

constexpr int kPictureSide = 32;
constexpr std::size_t kSpeechSamples = 64;

void Require(bool condition, const char* what) {
  if (condition) return;
  std::cerr << "make_seeds: " << what << '\n';
  std::exit(1);
}

std::string TextOf(std::span<const BYTE> bytes) {
  return {bytes.begin(), bytes.end()};
}

// The seeds of one target, numbered, each with the same beginning.
class Seeds {
 public:
  Seeds(const fs::path& root, const std::string& target, std::string beginning = {})
      : m_directory(root / target), m_beginning(std::move(beginning)) {
    fs::create_directories(m_directory);
  }

  void Add(const std::string& bytes) {
    const fs::path path = m_directory / std::to_string(m_count++);
    std::ofstream(path, std::ios::binary) << m_beginning << bytes;
    Require(fs::file_size(path) == m_beginning.size() + bytes.size(), "cannot write a seed");
  }

  // A file, and what becomes of it: cut, a piece lost, and longer than the bytes it has.
  void AddWithDamage(const std::string& bytes) {
    // Large where targets take gaps of any length, and where they take the rest of a division.
    constexpr ULONGLONG kGapBytes = (1ULL << 34) + (1 << 20) + (1 << 14);
    const std::size_t size = bytes.size();
    Add(bytes);
    Add(bytes.substr(0, size / 2));
    Add(bytes.substr(0, size - 1));
    Add(bytes.substr(0, size / 3) + bytes.substr(size / 2));
    Add(bytes + GapInstruction(size, kGapBytes));
    Add(bytes + GapInstruction(size / 2, kGapBytes));
  }

 private:
  fs::path m_directory;
  std::string m_beginning;
  int m_count = 0;
};

// What a channel may call for, as channel_callback_fuzz takes it apart: frames, a caption, frames
// from before an alarm and faces, with the camera named and then closed and opened in between.
void MakeChannelCallSeeds(const fs::path& root) {
  Seeds seeds(root, "channel_callback_fuzz");
  const auto call = [](char what, char words, const std::string& bytes) {
    return std::string{what, words} + Little(bytes.size(), 2) + bytes;
  };
  const auto frame = [](DWORD flags, DWORD video_bytes, DWORD speech_bytes) {
    return std::string(12, '\0') + Little(flags) + Little(1000) + Little(video_bytes) +
           Little(speech_bytes) + Little(0) + "video speech";
  };
  const std::string faces = std::string(8, '\0') + Little(2) + '\x80' + std::string(19, '\0') +
                            Little(0) + Little(0x00030002) + std::string(8, '\0') + "6 byte" +
                            Little(0) + Little(0x00010001) + std::string(8, '\0') + "1";
  const std::string calls = call(4, 1, "100%% %s") + call(0, 1, frame(0x80230000, 5, 6)) +
                            call(1, 1, "") + call(2, 4, frame(0, 5, 0)) +
                            call(2, 4, frame(0x80000001, 614400, 65536)) + call(3, 1, faces) +
                            call(5, 0, "") + call(0, 1, frame(0, 5, 0)) + call(6, 0, "") +
                            call(0, 1, frame(0, 0xFFFFFFFF, 0)) + call(7, 1, "");
  seeds.AddWithDamage(calls);
}

// Packets of a street scene, an I-frame first.
std::vector<std::string> VideoPackets() {
  constexpr DWORD kPackets = 3;
  const zebdev::StreetScene scene(kPictureSide, kPictureSide);
  noxcodec::VideoEncoderSettings settings;
  settings.width = settings.height = kPictureSide;
  settings.quantiser_i = settings.quantiser_p = noxcodec::kMaxQuantiser;
  noxcodec::VideoEncoder encoder(settings);
  noxcodec::Picture picture;
  std::vector<std::string> packets;
  for (DWORD frame = 0; frame < kPackets; ++frame) {
    scene.Render(10 * frame, picture);
    packets.push_back(TextOf(encoder.Encode(picture.View()).data));
  }
  return packets;
}

std::string SpeechPacket() {
  std::array<std::int16_t, kSpeechSamples> samples{};
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples.at(i) = static_cast<std::int16_t>(i * i * 7);
  }
  noxcodec::SpeechEncoder encoder;
  return TextOf(encoder.Encode(samples));
}

void MakeVideoSeeds(const fs::path& root) {
  Seeds seeds(root, "noxcodec_video_fuzz");
  std::string stream;
  for (const std::string& packet : VideoPackets()) {
    stream += Little(packet.size(), sizeof(WORD)) + packet;
    seeds.Add(stream);
  }
}

// Recordings of a camera with sound: one that was closed, one whose writer stopped in the middle,
// one of short frames in several blocks; and the buffer form of a frame.
void MakeRecordingSeeds(const fs::path& root, const std::string& target,
                        const std::string& beginning = {}) {
  Seeds seeds(root, target, beginning);
  SparseDisk disk;
  CZebFileInfo info = MakeInfo("r");
  CZebFile file;
  Require(file.Open(&info, kZebFileWrite) == 1, "cannot make a recording");
  CZebFrameData frame(kPictureSide, kPictureSide, 2 * kSpeechSamples);
  WORD type = 0;
  DWORD time_stamp = 1000;
  for (const std::string& packet : VideoPackets()) {
    FillFrame(frame, type, time_stamp += 40, packet, SpeechPacket());
    file.WriteOneFrame(&frame);
    type = 1;
  }
  seeds.Add(BufferFormOf(frame, frame.GetSize()));
  seeds.Add(disk.Get("r"));
  file.Close();
  seeds.AddWithDamage(disk.Get("r"));
  seeds.AddWithDamage(RawRecording({3, 1, 2, 0}));
}

// What a host does with a recording in playback_fuzz and panes_fuzz: opening it with captions and
// sound, then the operations, two bytes each. Between them the player is driven on by 80 ms.
std::string ControlOperations() {
  constexpr std::array<std::array<char, 2>, 15> kOperations = {{{15, 10},
                                                                {9, 0},
                                                                {15, 10},
                                                                {9, 0},
                                                                {3, 0},
                                                                {4, 0},
                                                                {7, 0},
                                                                {2, 5},
                                                                {9, 0},
                                                                {5, 2},
                                                                {10, 0},
                                                                {1, 25},
                                                                {8, 1},
                                                                {6, 0},
                                                                {0, 0}}};
  std::string bytes;
  for (const auto& [what, how] : kOperations) bytes += {what, how, 15, 10};
  return Little(bytes.size() / 2, 1) + "\3" + bytes;
}

// A live frame with speech and masks, its masks alone, and both forms of those.
void MakeLiveDataSeeds(const fs::path& root) {
  Seeds seeds(root, "live_data_fuzz");
  CVideoData data({1, 2}, kPictureSide, kPictureSide);
  FillFrame(data, 0, 1000, "video", "speech");
  for (const LONG left : {2, 4}) {
    auto mask = std::make_unique<CMaskInfo>();
    mask->SetMaskRect({0, 0, 22, 18}, {left, 4, 11, 9}, tag_FRAMESIZE{130}, 6);
    mask->SetMove(1, 1);
    data.GetMaskList()->AddMaskInfo(mask.release());
  }
  seeds.AddWithDamage(BufferFormOf(data, data.GetSize()));
  seeds.AddWithDamage(BufferFormOf(*data.GetMaskList(), data.GetMaskList()->GetSize()));
  CMemFile file;
  CArchive archive(file, CArchive::Mode::kStore);
  data.GetMaskList()->Serialize(archive);
  archive.Close();
  seeds.AddWithDamage(TextOf(file.GetBytes()));
}

// Live frames with speech and masks, shown and heard in the stream decoder.
void MakeStreamDecoderSeeds(const fs::path& root) {
  Seeds seeds(root, "stream_decoder_fuzz");
  CVideoData data({1, 2}, kPictureSide, kPictureSide);
  for (LONG left = 0; left < 6; ++left) {
    auto mask = std::make_unique<CMaskInfo>();
    mask->SetMaskRect({0, 0, 22, 18}, {left, 4, 11, 9}, tag_FRAMESIZE{130}, 6);
    data.GetMaskList()->AddMaskInfo(mask.release());
  }
  std::string input;
  WORD type = kIFrame;
  for (const std::string& packet : VideoPackets()) {
    FillFrame(data, type, 1000, packet, SpeechPacket());
    type = 1;
    const std::string frame = BufferFormOf(data, data.GetSize());
    const std::string after("\x03\x00\x04\xFF\x01\x01", 6);  // a picture, sound, no surface
    for (const std::string& part :
         {std::string("\x06\x00", 2), frame, std::string("\x05\x00", 2), frame, after})
      input += part;
  }
  seeds.AddWithDamage(input);
}

void MakeFaceSeeds(const fs::path& root) {
  Seeds seeds(root, "mox_file_fuzz");
  const std::string faces = std::string("face\4\0\3\0\1\0\1\0\0\0\0\0", 16) + "twelve bytes";
  seeds.Add(faces);
  seeds.Add(faces + faces);
  SparseDisk disk;
  CMoxFile file;
  file.SetHostName("host");
  file.SetBoardName("brd");
  file.SetCameraName("camera");
  Require(file.Open("f", 1) == 1 && file.Close() == 1, "cannot make a face file");
  std::string bytes = disk.Get("f");
  seeds.AddWithDamage(bytes);
  // Of 4 x 3 pixels, so that two faces take little room.
  bytes.replace(12, 8, Little(4) + Little(3));
  seeds.AddWithDamage(bytes + "timetwelve bytes" + "timetwelve bytes");
}

void MakeBitmapSeeds(const fs::path& root) {
  Seeds seeds(root, "dib_fuzz");
  SparseDisk disk;
  for (const WORD bit_count : std::array<WORD, 6>{1, 4, 8, 16, 24, 32}) {
    os::BitmapInfoHeader header;
    header.m_width = 5;
    header.m_height = 3;
    header.m_bit_count = bit_count;
    std::string bytes = TextOf(header.Format());
    for (DWORD color = 0; color < header.ColorCount(); ++color) bytes += Little(color * 0x010305);
    const std::size_t row_bytes = os::RowBytes(5U * bit_count);
    for (std::size_t i = 0; i < 3 * row_bytes; ++i) bytes += static_cast<char>(i * 11);
    const std::span dib(reinterpret_cast<const BYTE*>(bytes.data()), bytes.size());
    os::RegisterBitmapResource(1, dib);
    seeds.Add(bytes);
    CDibObj picture;
    Require(picture.LoadBmp(1U) == 1 && picture.SaveBmp("b") == 1, "cannot make a bitmap");
    const std::string file = disk.Get("b");
    seeds.AddWithDamage(file);
    // As wide or high as a power of two, up to where the bytes of a row do not fit 32 bits.
    constexpr std::size_t kWidthOffset = 18;
    constexpr std::size_t kHeightOffset = 22;
    constexpr int kFirstLargeBit = 20;
    for (int bit = kFirstLargeBit; bit < 32; ++bit) {
      for (const std::size_t offset : {kWidthOffset, kHeightOffset}) {
        seeds.Add(std::string(file).replace(offset, sizeof(DWORD), Little(1ULL << bit)));
      }
    }
  }
}

void MakeSnapshotSeeds(const fs::path& root) {
  constexpr DWORD kSide = 4;
  Seeds seeds(root, "image_fuzz");
  SparseDisk disk;
  CImage image;
  image.CreateImage(new BYTE[kSide * kSide * 3](), kSide, kSide);
  Require(image.SaveImageAs(kImageBmp, "s.bmp") == 1, "cannot make a snapshot");
  const std::string bare = disk.Get("s.bmp");
  seeds.Add(bare);
  image.SetHostName("host");
  image.SetBoardName("brd");
  image.SetCameraName("camera");
  image.SetTimeStamp(1000000000);
  image.SaveImageAs(kImageBmp, "s.bmp");
  const std::string whole = disk.Get("s.bmp");
  seeds.AddWithDamage(whole);
  seeds.Add(whole.substr(bare.size()));
}

void MakeDatabaseSeeds(const fs::path& root) {
  Seeds seeds(root, "database_file_fuzz");
  const auto text = [](const std::string& value) { return Little(value.size(), 1) + value; };
  const auto disk = [&](const std::string& path, const std::string& sound) {
    return Little(1000) + Little(1) + text(path) + text("ZebDatabase") + Little(1) + text(sound);
  };
  seeds.AddWithDamage(Little(2) + text("d:\\") + disk("d:\\", "") +
                      disk("e:\\dvr", "c:\\bell.wav"));
  seeds.Add(Little(1) + text("") + disk("d:\\", std::string(200, 's')));
}

void MakeSearchSeeds(const fs::path& root) {
  Seeds seeds(root, "search_records_fuzz");
  CSearchParam criteria;
  criteria.SetHostName("host");
  seeds.Add(BufferFormOf(criteria, criteria.GetSize()));
  criteria.SetDbsName("d:\\ZebDatabase");
  criteria.SetDate(1000000000);
  criteria.SetBeginTime(CTime(1000000000));
  criteria.SetEndTime(CTime(1000003600));
  criteria.SetFrameSize(tag_FRAMESIZE{2});
  criteria.SetCameraID({1, 2});
  seeds.AddWithDamage(BufferFormOf(criteria, criteria.GetSize()));
  CFileSearchInfo found(&criteria);
  for (const char* name : {"a.zebz", "b.zebz", "c.zebz"}) {
    found.Append(std::make_unique<CZebFileInfo>(MakeInfo(name)));
  }
  int start = 1;
  int count = 2;
  std::vector<BYTE> bytes(found.GetSize(start, count));
  BYTE* cursor = bytes.data();
  Require(found.Write(cursor, start, count) == bytes.size(), "cannot write a search");
  seeds.AddWithDamage(TextOf(bytes));
}

// Of a few samples in each form, with a chunk that means nothing in front of them.
void MakeSoundSeeds(const fs::path& root) {
  Seeds seeds(root, "wav_fuzz");
  const std::string sound = "sound" + std::string(40, '\x70') + "s";
  for (const WORD channels : {WORD{1}, WORD{2}}) {
    for (const WORD bits : {WORD{8}, WORD{16}}) {
      for (const DWORD rate : {4000U, 8000U, 44100U}) {
        const std::string chunks = "WAVELIST" + Little(2) + "xx" + "fmt " + Little(16) +
                                   Little(1, 2) + Little(channels, 2) + Little(rate) + Little(0) +
                                   Little(0, 2) + Little(bits, 2) + "data" + Little(sound.size()) +
                                   sound;
        seeds.AddWithDamage("RIFF" + Little(chunks.size()) + chunks);
      }
    }
  }
}

void MakeTextSeeds(const fs::path& root) {
  Seeds videos(root, "y4m_fuzz");
  Seeds played(root, "y4m_loop_fuzz");
  const std::string picture = "FRAME\n" + std::string(4 * 2 + 2 * 2 * 1, 'p');
  for (const char* header : {"W4 H2 F25:1 Ip A1:1 C420jpeg", "W4 H2", "H2 F30000:1001 W4 C420"}) {
    std::string video = "YUV4MPEG2 ";
    video.append(header).append("\n").append(picture).append(picture);
    videos.Add(video);
    videos.Add(video.substr(0, video.size() - 1));
    played.AddWithDamage(video);
  }
  Seeds drives(root, "drive_list_fuzz");
  const std::string paths = "\nd:\\dvr\\x.zebz\nE:/../../etc/./passwd\nd:\n/srv/x\n";
  for (const char* list : {"d=/srv", "d=/srv:64M;e=/mnt/nas:network:2G;", "e=/:cdrom;E=.:ramdisk:1",
                           "d=;e=/srv", "d=/srv:network:0"}) {
    drives.Add(list + paths);
  }
}

}  // namespace

int main(int argc, char** argv) {
  Require(argc == 2, "usage: make_seeds DIRECTORY");
  const fs::path root = *(argv + 1);
  MakeVideoSeeds(root);
  Seeds(root, "noxcodec_speech_fuzz").AddWithDamage(SpeechPacket());
  MakeRecordingSeeds(root, "recording_fuzz");
  MakeRecordingSeeds(root, "salvage_fuzz");
  MakeRecordingSeeds(root, "playback_fuzz", ControlOperations());
  MakeRecordingSeeds(root, "panes_fuzz", ControlOperations());
  MakeLiveDataSeeds(root);
  MakeStreamDecoderSeeds(root);
  MakeChannelCallSeeds(root);
  MakeFaceSeeds(root);
  MakeBitmapSeeds(root);
  MakeSnapshotSeeds(root);
  MakeDatabaseSeeds(root);
  MakeSearchSeeds(root);
  MakeSoundSeeds(root);
  MakeTextSeeds(root);
  return 0;
}
