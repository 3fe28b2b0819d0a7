// Files for assimp in a process of its own, and those of them that a model may open.
#pragma once

#include <string>
#include <string_view>

#include <assimp/cfileio.h>

#include "drawing/files/load_limits.h"
#include "drawing/model/separate_process.h"

namespace vorna::drawing::model {

// The files that assimp asks for: the model's content, if it is in memory, and others from the process that waits.
class Requested_Files {
public:
    // All outlive the object. name: under which assimp asks for the content; content: null = it is a file.
    Requested_Files(Process_Pipe& pipe, const std::string& name, const std::string* content);
    Requested_Files(const Requested_Files&) = delete;
    Requested_Files& operator=(const Requested_Files&) = delete;

    aiFileIO* callbacks() noexcept { return &callbacks_; }

private:
    aiFile* open(const char* name, const char* mode);

    Process_Pipe& pipe_;
    const std::string& name_;
    const std::string* content_;
    aiFileIO callbacks_;
};

// Opens regular files only, because others may have to be waited for, and only those that the limits allow.
class Files_Of_Model {
public:
    Files_Of_Model(const std::string& model, Load_Limits& limits) : model_(model), limits_(limits) {}

    // A file that is open for reading, or -1 with errno.
    int open_file(const std::string& name);

    // Why a file was refused, the first of them; empty when none was.
    const std::string& refusal() const { return refusal_; }

private:
    void refuse(const std::string& why);

    const std::string& model_;
    Load_Limits& limits_;
    std::string refusal_;
};

} // namespace vorna::drawing::model
