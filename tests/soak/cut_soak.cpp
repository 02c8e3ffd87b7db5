// Work on files that is ended at each of its system calls, or done where there is no room: what was
// there before or what was to be there is whole afterwards, also after a power cut at that moment,
// and the next program does the same work without a trace of the one that was ended.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/mount.h>
#include <unistd.h>

#include "common/files/fichero_itv.h"
#include "platform/coredll/coredll.h"
#include "tests/soak/disk_model.h"
#include "tests/soak/namespaces.h"
#include "tests/soak/soak.h"
#include "tests/soak/tracer.h"
#include "tests/support/temp_device.h"

namespace zelto::soak {
namespace {

namespace fs = std::filesystem;

constexpr double kLongestWork = 5;  // seconds
constexpr int kMostCalls = 5000;    // of one piece of work

std::string ReadAll(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteAll(const std::string& path, const std::string& bytes) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    Require(file.flush().good(), "no room for the trial itself");
}

// Numbers aside: a clock that is set writes the time of that moment.
std::string WithoutNumbers(std::string text) {
    const auto is_number = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    std::replace_if(text.begin(), text.end(), is_number, '0');
    text.erase(
        std::unique(text.begin(), text.end(), [](char a, char b) { return a == '0' && b == '0'; }),
        text.end());
    return text;
}

// A piece of work that puts one content of a file in the place of another.
struct Work {
    const char* name;
    std::string folder;
    std::string target;  // in the folder
    // Other names in the folder that may hold the old or the new.
    std::vector<std::string> aside = {};
    std::function<int()> run = {};        // 0 when it says that it is done
    bool by_time = false;                 // the new content has the time in it
    std::string before = {}, after = {};  // the contents
    std::string prepared = {};            // a name that holds the new content beforehand; may be ""

    std::string Path(const std::string& name_there) const { return folder + "/" + name_there; }

    void Prepare() const {
        for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
            const std::string file = entry.path().filename();
            if (file == target || std::count(aside.begin(), aside.end(), file) > 0)
                fs::remove(entry.path());
        }
        WriteAll(Path(target), before);
        if (!prepared.empty())
            WriteAll(Path(prepared), after);
    }

    bool IsNew(const std::string& content) const {
        return by_time ? WithoutNumbers(content) == WithoutNumbers(after) : content == after;
    }

    // Whether a name that `keeps` accepts has one of the two contents whole.
    bool IsWhole(const std::function<bool(const std::string& path)>& keeps) const {
        std::vector<std::string> names = aside;
        names.push_back(target);
        return std::any_of(names.begin(), names.end(), [&](const std::string& file) {
            const std::string content = ReadAll(Path(file));
            return keeps(Path(file)) && (content == before || IsNew(content));
        });
    }
};

int RunAlone(const Work& work) {
    Child process(work.run);
    return process.Wait(kLongestWork);
}

// Without the one that was ended: done, and none of its files is left.
void RequireNextDoesIt(const Work& work) {
    if (!work.prepared.empty())
        WriteAll(work.Path(work.prepared), work.after);
    Require(RunAlone(work) == 0, "the next program fails");
    Require(work.IsNew(ReadAll(work.Path(work.target))), "the next program did not do the work");
    for (const fs::directory_entry& entry : fs::directory_iterator(work.folder)) {
        const std::string name = entry.path().filename();
        Require(!name.starts_with(".zelto-copy-"), name + " is left");
    }
}

// Ends the work before its call number `last`: false when it has fewer.
bool EndAtCall(const Work& work, int last, DiskModel& disk) {
    int calls = 0;
    const int status = RunTraced(
        work.run,
        [&](const TracedCall& call) {
            disk.Before(call);
            return ++calls < last;
        },
        [&](const TracedCall& call, int64_t result) { disk.After(call, result); });
    Require(status == kEndedByTracer || status == 0,
            "the work failed with " + std::to_string(status));
    return status == kEndedByTracer;
}

// The number of calls at which neither content would be whole; `calls` receives that of all.
int CountLosses(const Work& work, int& calls, bool with_next) {
    int losses = 0;
    for (calls = 1; calls <= kMostCalls; ++calls) {
        work.Prepare();
        DiskModel disk;
        const bool ended = EndAtCall(work, calls, disk);
        losses += work.IsWhole([&](const std::string& path) { return disk.Keeps(path); }) ? 0 : 1;
        if (!ended)
            return losses;
        if (with_next)
            RequireNextDoesIt(work);
    }
    throw Failure(std::string(work.name) + " does not come to an end");
}

void EndAtEachCall(const Work& work) {
    int calls = 0;
    const Stopwatch watch;
    const int losses = CountLosses(work, calls, true);
    std::printf("%s: ended before each of %d calls in %.0f s: lost in %d, the next always works\n",
                work.name, calls - 1, watch.Seconds(), losses);
    Require(losses == 0, "neither the old nor the new content was whole");
}

// ---- The work --------------------------------------------------------------------------------

const std::string kBefore(30000, 'o');
const std::string kAfter(20000, 'n');

DString Name(const Work& work) {
    return DString(test::WidePath(work.Path(work.target)).c_str());
}

bool WriteNew(TFicheroITV& file) {
    return file.Write(kAfter.data(), static_cast<int32_t>(kAfter.size())) && file.Flush();
}

Work Backup(const std::string& folder, uint32_t mode, const char* name, const char* backup) {
    Work work{.name = name, .folder = folder, .target = "a.txt", .aside = {backup}};
    work.before = kBefore;
    work.after = kAfter;
    work.run = [mode, name = Name(work)] {
        TFicheroITV file;
        const bool done = file.Abre(name, FICH_WRITE | FICH_BINARY | mode) && WriteNew(file);
        return done && file.close() ? 0 : 1;
    };
    return work;
}

Work Commit(const std::string& folder) {
    Work work{.name = "commit", .folder = folder, .target = "a.txt"};
    work.aside = {"a.txt.BAK", "a.txt.$$$"};
    work.before = kBefore;
    work.after = kAfter;
    work.prepared = "a.txt.$$$";
    work.run = [name = Name(work)] {
        TFicheroITV file;
        const uint32_t mode = FICH_APPEND | FICH_BINARY | FICH_SAFE_WRITE;
        return file.Abre(name, mode) && file.close() && file.close() ? 0 : 1;
    };
    return work;
}

int SetValue(DWORD value) {
    HKEY key = nullptr;
    const LONG made = RegCreateKeyExW(HKEY_CURRENT_USER, TEXT("Soak"), 0, nullptr, 0, KEY_SET_VALUE,
                                      nullptr, &key, nullptr);
    if (made != 0)
        return 1;
    const auto* data = reinterpret_cast<const BYTE*>(&value);
    const LONG set = RegSetValueExW(key, TEXT("Value"), 0, REG_DWORD, data, sizeof value);
    RegCloseKey(key);
    return set == 0 ? 0 : 1;
}

int SetClock() {
    const SYSTEMTIME time{2031, 5, 0, 17, 8, 30, 0, 0};
    return SetSystemTime(&time) != FALSE ? 0 : 1;
}

// Work on the device's registry; its contents are what it makes of them undisturbed.
Work OnRegistry(const test::TempDevice& device, const char* name, const std::function<int()>& run,
                bool by_time) {
    Work work{.name = name, .folder = device.Device(), .target = "registry", .run = run};
    work.by_time = by_time;
    Child first([] { return SetValue(1); });
    Require(first.Wait(kLongestWork) == 0, "the registry cannot be written");
    work.before = ReadAll(work.Path(work.target));
    Require(RunAlone(work) == 0, "the registry cannot be written again");
    work.after = ReadAll(work.Path(work.target));
    Require(work.before != work.after, "the work changes nothing");
    return work;
}

std::vector<Work> AllWork(const test::TempDevice& device) {
    return {Backup(device.Path(), FICH_BACKUP, "backup", "a.BAK"),
            Backup(device.Path(), FICH_BACKUP_BAK, "backup .BAK", "a.txt.BAK"),
            Backup(device.Path(), FICH_BACKUP | FICH_PACKAGE, "backup, handle", "a.BAK"),
            Commit(device.Path()),
            OnRegistry(
                device, "registry", [] { return SetValue(2); }, false),
            OnRegistry(device, "clock", SetClock, true)};
}

// Written over in place: what this program must find out.
void ShowThatLossesAreSeen(const std::string& folder) {
    Work work{.name = "control", .folder = folder, .target = "a.txt"};
    work.before = kBefore;
    work.after = kAfter;
    work.run = [path = work.Path(work.target)] {
        WriteAll(path, kAfter);
        return 0;
    };
    int calls = 0;
    const int losses = CountLosses(work, calls, false);
    std::printf("control: a file written over in place is lost in %d of %d calls\n", losses, calls);
    Require(losses > 0, "a loss was not seen");
}

// ---- No room ---------------------------------------------------------------------------------

// Takes all room of the file system but `bytes`.
void FillUp(const std::string& path, size_t bytes) {
    const auto room = fs::space(path.substr(0, path.rfind('/'))).available;
    if (room <= bytes)
        return;
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const bool filled = posix_fallocate(file, 0, static_cast<off_t>(room - bytes)) == 0;
    close(file);
    Require(filled, "the file system cannot be filled");
}

void WithRoom(const Work& work, size_t bytes, int& told) {
    const std::string filler = work.Path("filler");
    work.Prepare();
    FillUp(filler, bytes);
    const int status = RunAlone(work);
    Require(status == 0 || status == 1, std::string(work.name) + " ended by a signal");
    Require(work.IsWhole([](const std::string&) { return true; }),
            std::string(work.name) + " lost both contents with " + std::to_string(bytes) +
                " bytes of room");
    Require(status == 1 || work.IsNew(ReadAll(work.Path(work.target))),
            std::string(work.name) + " says that it is done, and is not");
    told += status;
    unlink(filler.c_str());
    RequireNextDoesIt(work);
}

constexpr int kNotAllowed = 77;

int OnSmallDisk() {
    const test::TempDevice device;
    if (!MountSmall(device.Path(), size_t{16} << 20) || mkdir(device.Device().c_str(), 0700) != 0)
        return kNotAllowed;
    for (const Work& work : AllWork(device)) {
        int sizes = 0;
        int told = 0;
        for (size_t room = 0; room <= 64 * 1024; room += 4096, ++sizes)
            WithRoom(work, room, told);
        std::printf("%s: %d sizes of room left, 0 to 64 KiB: %d failures told, nothing lost\n",
                    work.name, sizes, told);
    }
    return 0;
}

void FullDisk() {
    Child process(OnSmallDisk);
    const int status = process.Wait(120);
    if (status == kNotAllowed)
        std::printf("no room: NOT TRIED, this host lets nobody mount\n");
    else
        Require(status == 0, "something was lost on a full file system");
}

}  // namespace
}  // namespace zelto::soak

int main() {
    using namespace zelto::soak;
    return RunSoak([] {
        const zelto::test::TempDevice device;
        ShowThatLossesAreSeen(device.Path());
        for (const Work& work : AllWork(device))
            EndAtEachCall(work);
        FullDisk();
    });
}
