// Files that are read whole.
#include "drawing/files/input_file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "drawing/files/gzip.h"
#include "drawing/files/path.h"
#include "drawing/files/standard_streams.h"
#include "drawing/files/usage_error.h"
#include "drawing/files/zstd.h"

namespace vorna::drawing {

std::string name_of_input(const std::string& path) {
    return path == "-" ? "standard input" : path;
}

std::string read_input(const std::string& path, Load_Limits& limits, std::size_t most) {
    most = std::min<std::size_t>(most, limits.most_of_a_file());
    std::ifstream file;
    errno = 0;
    if (path == "-") {
        set_binary(stdin);
    } else {
        file.open(path_of(path), std::ios::binary);
    }
    std::istream& stream = path == "-" ? std::cin : file;
    std::string bytes;
    std::vector<char> block(std::size_t{1} << 16);
    while (stream.read(block.data(), static_cast<std::streamsize>(block.size())) || stream.gcount() > 0) {
        bytes.append(block.data(), static_cast<std::size_t>(stream.gcount()));
        if (bytes.size() > most) {
            throw Usage_Error(name_of_input(path) + ": expected at most " + std::to_string(most >> 20) + " MiB, found more");
        }
    }
    // Of standard input the stream knows only that nothing comes any more.
    if (stream.bad() || (path == "-" ? std::ferror(stdin) != 0 : !file.is_open())) {
        throw Usage_Error(name_of_input(path) + ": cannot be read: " + std::generic_category().message(errno));
    }
    limits.add_file(name_of_input(path), bytes.size());
    limits.take_memory(name_of_input(path), bytes.size());
    return bytes;
}

std::string unpacked_input(const std::string& name, std::string packed, Load_Limits& limits, std::size_t most) {
    if (!is_gzip(packed) && !is_zstd(packed)) {
        return packed;
    }
    const Load_Limits::Loan window(limits, name, is_zstd(packed) ? zstd_window(packed) : 0);
    try {
        std::string content = (is_gzip(packed) ? gunzip : unzstd)(packed, most, [&](std::size_t bytes) {
            limits.take_memory(name, bytes);
            limits.take_work(name, bytes);
        });
        // Texts shrink to a quarter at least, so that so much gives room as if it had not been packed.
        constexpr std::size_t usual_ratio = 4;
        limits.add_file(name + ", unpacked", std::min(content.size(), usual_ratio * packed.size()));
        return content;
    } catch (const Load_Error&) {
        throw;
    } catch (const std::runtime_error& error) {
        throw Usage_Error(name + ": " + error.what());
    }
}

} // namespace vorna::drawing
