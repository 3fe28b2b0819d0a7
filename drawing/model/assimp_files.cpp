// Files for assimp in a process of its own.
#include "drawing/model/assimp_files.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "drawing/files/path.h"

namespace vorna::drawing::model {
namespace {

// A file whose bytes are in memory. A file that becomes shorter while it is read ends the process, which is the copy.
class File_In_Memory {
public:
    explicit File_In_Memory(std::string_view content)
        : callbacks_{read, write, tell, file_size, seek, flush, reinterpret_cast<char*>(this)}, content_(content) {}
    // Closes the file.
    explicit File_In_Memory(int file) : File_In_Memory(std::string_view()) {
        const auto size = static_cast<std::size_t>(std::max<off_t>(lseek(file, 0, SEEK_END), 0));
        mapped_ = size > 0 ? mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file, 0) : nullptr;
        close(file);
        if (mapped_ == MAP_FAILED) {
            mapped_ = nullptr;
            throw std::bad_alloc();
        }
        content_ = {static_cast<const char*>(mapped_), size};
    }
    File_In_Memory(const File_In_Memory&) = delete;
    File_In_Memory& operator=(const File_In_Memory&) = delete;
    ~File_In_Memory() {
        if (mapped_) {
            munmap(mapped_, content_.size());
        }
    }

    aiFile* callbacks() noexcept { return &callbacks_; }
    static File_In_Memory& of(aiFile* file) { return *reinterpret_cast<File_In_Memory*>(file->UserData); }

private:
    static std::size_t read(aiFile* file, char* to, std::size_t size, std::size_t count) {
        File_In_Memory& self = of(file);
        const std::size_t remaining = self.content_.size() - std::min(self.place_, self.content_.size());
        const std::size_t taken = size == 0 ? 0 : std::min(count, remaining / size);
        if (taken > 0) {
            std::memcpy(to, self.content_.data() + self.place_, taken * size);
            self.place_ += taken * size;
        }
        return taken;
    }
    static std::size_t write(aiFile*, const char*, std::size_t, std::size_t) { return 0; }
    static std::size_t tell(aiFile* file) { return of(file).place_; }
    static std::size_t file_size(aiFile* file) { return of(file).content_.size(); }
    // Steps back come as numbers that wrap around.
    static aiReturn seek(aiFile* file, std::size_t offset, aiOrigin origin) {
        File_In_Memory& self = of(file);
        const std::size_t start = origin == aiOrigin_CUR ? self.place_ : origin == aiOrigin_END ? self.content_.size() : 0;
        if (const std::size_t place = offset + start; place <= PTRDIFF_MAX) {
            self.place_ = place;
            return aiReturn_SUCCESS;
        }
        return aiReturn_FAILURE;
    }
    static void flush(aiFile*) {}

    aiFile callbacks_;
    void* mapped_ = nullptr;
    std::string_view content_;
    std::size_t place_ = 0;
};

} // namespace

Requested_Files::Requested_Files(Process_Pipe& pipe, const std::string& name, const std::string* content)
    : pipe_(pipe), name_(name),
      content_(content), callbacks_{[](aiFileIO* io, const char* wanted, const char* mode) {
                                        return reinterpret_cast<Requested_Files*>(io->UserData)->open(wanted, mode);
                                    },
                                    [](aiFileIO*, aiFile* file) { delete &File_In_Memory::of(file); },
                                    reinterpret_cast<char*>(this)} {
}

aiFile* Requested_Files::open(const char* name, const char* mode) {
    if (*mode != 'r') {
        return nullptr;
    }
    if (content_ && name == name_) {
        return (new File_In_Memory(std::string_view(*content_)))->callbacks();
    }
    const int file = pipe_.request_file(name);
    return file >= 0 ? (new File_In_Memory(file))->callbacks() : nullptr;
}

int Files_Of_Model::open_file(const std::string& name) {
    if (!limits_.allows(model_, name)) {
        refuse(outside_message(name));
        return -1;
    }
    std::error_code none;
    const std::filesystem::path place = std::filesystem::weakly_canonical(path_of(name), none);
    const int file = open(place.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_NOCTTY | O_CLOEXEC);
    struct stat status = {};
    if (file >= 0 && (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))) {
        close(file);
        refuse(model_ + ": expected a regular file, found " + name);
        return -1;
    }
    if (file >= 0) {
        limits_.add_file(place.string(), static_cast<std::uint64_t>(status.st_size));
    }
    return file;
}

void Files_Of_Model::refuse(const std::string& why) {
    errno = EACCES;
    refusal_ = refusal_.empty() ? why : refusal_;
}

} // namespace vorna::drawing::model
