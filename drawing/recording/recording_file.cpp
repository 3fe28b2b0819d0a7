// Recordings in files.
#include "drawing/recording/recording_file.h"

#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "drawing/files/gzip.h"
#include "drawing/files/input_file.h"
#include "drawing/files/json_memory.h"
#include "drawing/files/zstd.h"
#include "drawing/recording/document.h"
#include "drawing/recording/recording_reader.h"
#include "drawing/recording/recording_writer.h"

namespace vorna::drawing::recording {

Recording load(const std::string& path, Load_Limits& limits) {
    const std::string name = name_of_input(path);
    try {
        return read_document(name, read_input(path, limits, most_bytes), limits);
    } catch (const std::bad_alloc&) {
        throw std::runtime_error(name + ": not enough memory to read it");
    }
}

Recording read_document(const std::string& name, std::string bytes, Load_Limits& limits) {
    const std::string document = unpacked_input(name, std::move(bytes), limits, most_bytes);
    if (document.size() > most_bytes) {
        throw Recording_Error("expected at most " + std::to_string(most_bytes >> 20) + " MiB");
    }
    // What is counted by the signs of a text is refused before it is parsed.
    limits.take_memory(name, 2 * document.size() + (is_cbor(document) ? 0 : json_memory(document)));
    return read_recording(document, [&](std::size_t more) { limits.take_memory(name, more); });
}

bool is_document(std::string_view bytes) noexcept {
    const std::size_t first = bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n");
    return is_gzip(bytes) || is_zstd(bytes) || is_cbor(bytes) || (first != bytes.npos && bytes[first] == '{');
}

std::string file_of(const Recording& recording, const std::string& path) {
    std::string_view name = path;
    const auto take_ending = [&name](std::string_view ending) {
        const bool has_it = name.ends_with(ending);
        name.remove_suffix(has_it ? ending.size() : 0);
        return has_it;
    };
    const bool by_gzip = take_ending(".gz"), by_zstd = take_ending(".zst");
    std::string bytes = name.ends_with(".cbor") ? cbor_of(recording) : json_of(recording);
    if (bytes.size() > most_bytes) {
        throw std::runtime_error(path + ": the recording would be longer than the " + std::to_string(most_bytes >> 20) +
                                 " MiB that a recording may have");
    }
    return by_gzip ? gzip(bytes) : by_zstd ? zstd(bytes) : bytes;
}

} // namespace vorna::drawing::recording
