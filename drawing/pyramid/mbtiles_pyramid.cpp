// A pyramid as an MBTiles file: an SQLite database in which tiles with the same image share it. It is made in a file beside the
// output, which then gets its bytes like any other.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <sqlite3.h>

#include "drawing/files/interruption.h"
#include "drawing/files/output_file.h"
#include "drawing/files/path.h"
#include "drawing/image/loaded_library.h"
#include "drawing/pyramid/mbtiles_library.h"
#include "drawing/pyramid/pyramid_file.h"

namespace vorna::drawing::pyramid {
namespace {

// What is used of the library.
#define VORNA_SQLITE_FUNCTIONS(LIST)                                                                                             \
    LIST(sqlite3_bind_blob)                                                                                                      \
    LIST(sqlite3_bind_int64)                                                                                                     \
    LIST(sqlite3_bind_text)                                                                                                      \
    LIST(sqlite3_close)                                                                                                          \
    LIST(sqlite3_column_text)                                                                                                    \
    LIST(sqlite3_errmsg)                                                                                                         \
    LIST(sqlite3_exec)                                                                                                           \
    LIST(sqlite3_finalize)                                                                                                       \
    LIST(sqlite3_open_v2)                                                                                                        \
    LIST(sqlite3_prepare_v2)                                                                                                     \
    LIST(sqlite3_reset)                                                                                                          \
    LIST(sqlite3_step)

// The functions under their own names.
struct Sqlite_Functions {
#define DECLARE(function) decltype(&::function) function;
    VORNA_SQLITE_FUNCTIONS(DECLARE)
#undef DECLARE

    Sqlite_Functions() {
        const Loaded_Library library(VORNA_SQLITE_LIBRARY, "MBTiles");
#define LOAD(function) library.load(function, #function);
        VORNA_SQLITE_FUNCTIONS(LOAD)
#undef LOAD
    }
};
#undef VORNA_SQLITE_FUNCTIONS

const Sqlite_Functions& sqlite() {
    static const Sqlite_Functions functions;
    return functions;
}

class Database {
public:
    Database(const std::string& file, int flags) {
        const int status = sqlite().sqlite3_open_v2(file.c_str(), &handle_, flags, nullptr);
        check(status);
    }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database() { sqlite().sqlite3_close(handle_); }

    void check(int status) const {
        if (status != SQLITE_OK && status != SQLITE_DONE) {
            throw std::runtime_error(std::string("the database of tiles cannot be written: ") + sqlite().sqlite3_errmsg(handle_));
        }
    }
    void run(const char* statements) const { check(sqlite().sqlite3_exec(handle_, statements, nullptr, nullptr, nullptr)); }
    sqlite3* handle() const noexcept { return handle_; }

private:
    sqlite3* handle_ = nullptr;
};

// A statement that is run with other values each time. Bytes and texts must live until then.
class Statement {
public:
    Statement(const Database& database, const char* text) : database_(database) {
        database.check(sqlite().sqlite3_prepare_v2(database.handle(), text, -1, &handle_, nullptr));
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement() { sqlite().sqlite3_finalize(handle_); }

    template <class... Values> void run(const Values&... values) {
        int place = 0;
        (database_.check(bind(++place, values)), ...);
        database_.check(sqlite().sqlite3_step(handle_));
        database_.check(sqlite().sqlite3_reset(handle_));
    }

    // The first column of the first row; empty without rows.
    std::string text() {
        const int status = sqlite().sqlite3_step(handle_);
        const unsigned char* found = status == SQLITE_ROW ? sqlite().sqlite3_column_text(handle_, 0) : nullptr;
        return found ? reinterpret_cast<const char*>(found) : "";
    }

private:
    int bind(int place, std::int64_t number) { return sqlite().sqlite3_bind_int64(handle_, place, number); }
    int bind(int place, const std::string& text) {
        return sqlite().sqlite3_bind_text(handle_, place, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    }
    int bind(int place, const std::vector<char>& bytes) {
        return sqlite().sqlite3_bind_blob(handle_, place, bytes.data(), static_cast<int>(bytes.size()), SQLITE_STATIC);
    }

    const Database& database_;
    sqlite3_stmt* handle_ = nullptr;
};

void fill(const Database& database, Tile_Log& log, const Pyramid_Facts& facts) {
    // The file is made anew when anything fails.
    database.run("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; PRAGMA application_id = 0x4D504258;"
                 "CREATE TABLE metadata (name TEXT, value TEXT);"
                 "CREATE TABLE images (tile_id INTEGER PRIMARY KEY, tile_data BLOB);"
                 "CREATE TABLE map (zoom_level INTEGER, tile_column INTEGER, tile_row INTEGER, tile_id INTEGER,"
                 " PRIMARY KEY (zoom_level, tile_column, tile_row)) WITHOUT ROWID;"
                 "CREATE VIEW tiles AS SELECT zoom_level, tile_column, tile_row, tile_data FROM map JOIN images USING (tile_id);"
                 "BEGIN");
    const auto number = [](double value) {
        std::string text = std::to_string(value);
        text.erase(text.find_last_not_of('0') + 1);
        return text.back() == '.' ? text + '0' : text;
    };
    const map::Extent& extent = facts.extent;
    Statement add_fact(database, "INSERT INTO metadata VALUES (?, ?)");
    const std::pair<std::string, std::string> values[] = {
        {"name", facts.name},
        {"format", facts.image_format},
        {"type", "baselayer"},
        {"version", "1"},
        {"minzoom", std::to_string(facts.first_zoom)},
        {"maxzoom", std::to_string(facts.last_zoom)},
        {"bounds", number(extent.west) + ',' + number(extent.south) + ',' + number(extent.east) + ',' + number(extent.north)},
        {"center", number(facts.center().x) + ',' + number(facts.center().y) + ',' + std::to_string(facts.first_zoom)},
        {"attribution", facts.attribution},
        {key_member, facts.key}};
    for (const auto& [name, value] : values) {
        if (!value.empty()) {
            add_fact.run(name, value);
        }
    }
    Statement add_image(database, "INSERT INTO images VALUES (?, ?)");
    // Images have the numbers of their first tiles: the log has them in the order in which threads or parts drew them.
    const std::vector<Logged_Tile> tiles = log.tiles();
    std::vector<std::int64_t> numbers(log.content_count(), -1);
    std::int64_t count = 0;
    for (const Logged_Tile& logged : tiles) {
        if (numbers[logged.content] < 0) {
            Interruption::check();
            numbers[logged.content] = count++;
            const std::string bytes = log.content(logged.content);
            add_image.run(numbers[logged.content], std::vector<char>(bytes.begin(), bytes.end()));
        }
    }
    Statement add_tile(database, "INSERT INTO map VALUES (?, ?, ?, ?)");
    for (const Logged_Tile& logged : tiles) {
        Interruption::check();
        const std::int64_t row_from_south = (std::int64_t{1} << logged.tile.zoom) - 1 - logged.tile.y;
        add_tile.run(std::int64_t{logged.tile.zoom}, std::int64_t{logged.tile.x}, row_from_south, numbers[logged.content]);
    }
    database.run("COMMIT");
}

// A new file that is removed at the end. A file of that name stays: then the name gets a number.
struct Scratch_File {
    explicit Scratch_File(const std::string& file) : name(file) {
        std::error_code none;
        for (int number = 2; std::filesystem::exists(std::filesystem::symlink_status(path_of(name), none)); ++number) {
            name = file + '-' + std::to_string(number);
        }
    }
    Scratch_File(const Scratch_File&) = delete;
    Scratch_File& operator=(const Scratch_File&) = delete;
    ~Scratch_File() {
        std::error_code none;
        std::filesystem::remove(path_of(name), none);
    }

    std::string name;
};

} // namespace

void load_mbtiles_library(const std::string&) {
    sqlite();
}

std::string mbtiles_key(const std::string& output) {
    const Database database(output, SQLITE_OPEN_READONLY);
    return Statement(database, (std::string("SELECT value FROM metadata WHERE name = '") + key_member + '\'').c_str()).text();
}

void write_mbtiles(Tile_Log& log, const Pyramid_Facts& facts, const std::string& output) {
    const Scratch_File scratch(output + ".vorna-database");
    {
        const Database database(scratch.name, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
        fill(database, log, facts);
    }
    std::ifstream made(path_of(scratch.name), std::ios::binary);
    Output_File file(output);
    std::string bytes(std::size_t{1} << 20, '\0');
    while (made) {
        Interruption::check();
        made.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
        file.write({bytes.data(), static_cast<std::size_t>(made.gcount())});
    }
    if (!made.eof()) {
        throw std::runtime_error(scratch.name + ": cannot be read");
    }
    file.commit();
}

} // namespace vorna::drawing::pyramid
