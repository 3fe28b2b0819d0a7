// `vorna tiles`: runs that are continued, and what it refuses. tile_files.py looks at the tiles.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "drawing/files/usage_error.h"
#include "drawing/pyramid/tile_log.h"
#include "tests/support/command_line.h"

namespace vorna::app {
namespace {

using namespace drawing::pyramid;
using replay_tests::Outcome;
using replay_tests::read_file;
using replay_tests::run_vorna;
using testing::HasSubstr;

constexpr const char* shapes =
    R"({"type":"FeatureCollection","features":[{"type":"Feature","properties":{"name":"A"},"geometry":{"type":"Polygon",
    "coordinates":[[[-60,-50],[80,-40],[60,60],[-90,50],[-60,-50]]]}}]})";

Drawn_Tile tile(int zoom, std::uint32_t x, std::uint32_t y, const std::string& bytes) {
    return {{zoom, x, y}, std::make_shared<const std::string>(bytes)};
}

// The bytes of all tiles in a log.
std::map<std::uint64_t, std::string> contents(Tile_Log& log) {
    std::map<std::uint64_t, std::string> all;
    for (const Logged_Tile& logged : log.tiles()) {
        all[hilbert_number(logged.tile)] = log.content(logged.content);
    }
    return all;
}

TEST(Tile_Logs, keep_whole_records_of_a_file_that_is_cut_or_damaged_anywhere) {
    const replay_tests::Temporary_Folder folder;
    const std::string name = folder.file("log");
    std::vector<std::size_t> ends;
    {
        Tile_Log log(name, "key", false);
        log.add({tile(1, 0, 0, "sea"), tile(1, 1, 0, "sea"), tile(1, 0, 1, "coast")});
        ends.push_back(read_file(name).size());
        log.add({tile(1, 1, 1, "sea"), tile(1, 0, 0, "other")}); // the first one stays
        ends.push_back(read_file(name).size());
        EXPECT_EQ(log.content_count(), 3U);
    }
    const std::string whole = read_file(name);
    const std::map<std::uint64_t, std::string> some{{1, "sea"}, {2, "coast"}, {4, "sea"}};
    std::map<std::uint64_t, std::string> all = some;
    all[3] = "sea";
    const std::size_t head = whole.find('\n') + 1;
    for (std::size_t end = head; end <= whole.size(); ++end) {
        for (const bool is_cut : {true, false}) {
            std::string bytes = whole.substr(0, is_cut ? end : whole.size());
            if (!is_cut && end > head) {
                bytes[end - 1] = static_cast<char>(bytes[end - 1] ^ 1);
            }
            folder.file("log", bytes);
            Tile_Log log(name, "key", true);
            const bool is_changed = !is_cut && end > head;
            const std::size_t sound = is_changed ? end - 1 : end;
            const bool has_all = is_changed ? false : !is_cut || end == ends[1];
            EXPECT_EQ(contents(log), (has_all ? all : sound >= ends[0] ? some : std::map<std::uint64_t, std::string>{})) << end;
            EXPECT_EQ(log.has({1, 1, 1}), has_all);
            log.add({tile(1, 1, 1, "new")}); // behind what is whole
            EXPECT_EQ(contents(log)[3], has_all ? "sea" : "new") << end;
        }
    }
    folder.file("log", whole);
    EXPECT_THROW(Tile_Log(name, "another key", true), drawing::Usage_Error);
    Tile_Log anew(name, "another key", false);
    EXPECT_TRUE(anew.tiles().empty());
}

class Tiles_Command : public testing::Test {
protected:
    Tiles_Command() { folder.file("map.json", shapes); }

    Outcome run(const std::string& output, std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"tiles", folder.file("map.json"), "-o", folder.file(output), "--zoom", "0-3"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return run_vorna(arguments);
    }

    std::string key_of_folder(const std::string& name) {
        const std::string text = read_file(folder.file(name + "/tiles.json")), member = "\"vorna:key\": \"";
        const std::size_t start = text.find(member) + member.size();
        return text.substr(start, text.find('"', start) - start);
    }

    replay_tests::Temporary_Folder folder;
};

TEST_F(Tiles_Command, a_run_is_continued_with_the_same_files_and_options_only) {
    namespace fs = std::filesystem;
    ASSERT_EQ(run("whole.pmtiles", {"--water", "blue"}).status, 0);
    const std::string whole = read_file(folder.file("whole.pmtiles"));
    ASSERT_EQ(run("whole", {"--water", "blue"}).status, 0);
    const std::string key = key_of_folder("whole");
    ASSERT_EQ(key.size(), 64U);
    {
        Tile_Log begun(folder.file("a.pmtiles.vorna-tiles"), key, false);
        begun.add({tile(0, 0, 0, read_file(folder.file("whole/0/0/0.png")))});
        begun.add({tile(1, 0, 0, read_file(folder.file("whole/1/0/0.png"))), tile(1, 1, 0, "lost")});
    }
    const std::string log = read_file(folder.file("a.pmtiles.vorna-tiles"));
    for (const std::vector<std::string>& others : {std::vector<std::string>{"--water", "red"},
                                                   {"--water", "blue", "--tile-size", "512"},
                                                   {"--water", "blue", "--title", "T"}}) {
        std::vector<std::string> options{"--resume"};
        options.insert(options.end(), others.begin(), others.end());
        const Outcome refused = run("a.pmtiles", options);
        EXPECT_EQ(refused.status, 2) << others.back();
        EXPECT_THAT(refused.errors, HasSubstr("expected tiles of the same files and options"));
    }
    folder.file("a.pmtiles.vorna-tiles", log.substr(0, log.size() - 3)); // as after the loss of power
    EXPECT_EQ(run("a.pmtiles", {"--resume", "--water", "blue", "--threads", "1", "--max-memory", "32M"}).status, 0);
    EXPECT_TRUE(read_file(folder.file("a.pmtiles")) == whole);
    EXPECT_FALSE(fs::exists(folder.file("a.pmtiles.vorna-tiles")));

    // Tiles that are there are not drawn.
    Tile_Log(folder.file("b.pmtiles.vorna-tiles"), key, false).add({tile(0, 0, 0, "a tile from before")});
    EXPECT_EQ(run("b.pmtiles", {"--resume", "--water", "blue"}).status, 0);
    EXPECT_THAT(read_file(folder.file("b.pmtiles")), HasSubstr("a tile from before"));
}

TEST_F(Tiles_Command, a_run_that_has_come_to_its_end_is_known_by_its_output) {
    namespace fs = std::filesystem;
    for (const std::string output : {"whole.pmtiles", "whole.mbtiles", "whole"}) {
        const Outcome made = run(output);
        if (made.errors.find("need a build with SQLite") != std::string::npos) {
            continue;
        }
        ASSERT_EQ(made.status, 0) << made.errors;
        const std::string file = folder.file(output == "whole" ? "whole/tiles.json" : output);
        const auto before = fs::last_write_time(file);
        const auto resumed = [&](std::vector<std::string> options, const std::string& message) {
            options.emplace_back("--resume");
            const Outcome outcome = run(output, options);
            EXPECT_EQ(outcome.status, message.empty() ? 0 : 2) << output << outcome.errors;
            EXPECT_THAT(outcome.errors, HasSubstr(message));
            EXPECT_LE(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
            EXPECT_EQ(fs::last_write_time(file), before);
        };
        const std::string others = file + ": expected tiles of the same files and options, found others";
        resumed({"--threads", "1"}, "");
        resumed({"--tile-size", "512"}, others);
        if (WITH_FREETYPE) {
            resumed({"--labels", "--halo", "2", "--halo-color", "red", "--label-key", "name"}, others);
        }
        for (const char* foreign : {"", "{}", "{\"vorna:key\": 1}", "PMTiles\x03 and no more", "no database"}) {
            std::ofstream(file, std::ios::binary) << foreign;
            fs::last_write_time(file, before);
            resumed({}, others);
        }
    }
}

TEST_F(Tiles_Command, parts_join_to_the_files_of_one_run) {
    for (const char* const output : {"tiles", "tiles.pmtiles", "tiles.mbtiles"}) {
        const std::string whole = folder.file(std::string("whole-") + output),
                          joined = folder.file(std::string("joined-") + output);
        const auto tiles = [&](const std::string& name, std::vector<std::string> more) {
            more.insert(more.begin(), {"tiles", folder.file("map.json", shapes), "-o", name, "--zoom", "0-5", "--water", "blue"});
            return run_vorna(more);
        };
        const Outcome made = tiles(whole, {});
        if (made.errors.find("need a build with SQLite") != std::string::npos) {
            continue;
        }
        ASSERT_EQ(made.status, 0) << made.errors;
        const Outcome printed = tiles(joined, {"--plan", "3"});
        ASSERT_EQ(printed.status, 0) << printed.errors;
        const nlohmann::json plan = nlohmann::json::parse(printed.output);
        const auto execute = [&](const nlohmann::json& entry, const std::vector<std::string>& more = {}) {
            auto command = entry.at("command").get<std::vector<std::string>>();
            command.erase(command.begin());
            command.insert(command.begin() + 1, more.begin(), more.end());
            return run_vorna(command);
        };
        const nlohmann::json& parts = plan.at("parts");
        ASSERT_EQ(parts.size(), 3U);
        // Threads and memory of machines differ.
        EXPECT_EQ(execute(parts[2], {"--threads=1", "--max-memory=300M"}).status, 0);
        EXPECT_EQ(execute(parts[0], {"--threads=3"}).status, 0);
        const std::string last = parts[1].at("file");
        EXPECT_THAT(execute(plan.at("join")).errors, HasSubstr(last + ": expected a part of the tiles, found none"));
        const Outcome lines = tiles(joined, {"--plan", "3", "--plan-lines"});
        EXPECT_EQ(std::ranges::count(lines.output, '\n'), 2) << lines.output;
        EXPECT_THAT(lines.output, HasSubstr("--part=1 "));
        EXPECT_EQ(execute(parts[1]).status, 0);
        const auto size = std::filesystem::file_size(last);
        std::filesystem::copy_file(last, folder.file("kept"), std::filesystem::copy_options::overwrite_existing);
        std::filesystem::resize_file(last, size - 1);
        EXPECT_THAT(execute(plan.at("join")).errors,
                    HasSubstr(last + ": expected part 1 of 3, found another one or a damaged one"));
        std::filesystem::copy_file(parts[0].at("file").get<std::string>(), last,
                                   std::filesystem::copy_options::overwrite_existing);
        EXPECT_THAT(execute(plan.at("join")).errors, HasSubstr("expected part 1 of 3"));
        std::filesystem::rename(folder.file("kept"), last);
        EXPECT_THAT(execute(plan.at("join"), {"--background=red"}).errors, HasSubstr("found those of others"));
        const Outcome outcome = execute(plan.at("join"));
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        if (std::string(output) == "tiles") {
            std::size_t count = 0;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(whole)) {
                if (entry.is_regular_file()) {
                    const auto other = std::filesystem::path(joined) / std::filesystem::relative(entry.path(), whole);
                    EXPECT_TRUE(read_file(other) == read_file(entry.path())) << other;
                    ++count;
                }
            }
            EXPECT_EQ(count, 1366U);
        } else {
            EXPECT_TRUE(read_file(joined) == read_file(whole));
        }
    }
    EXPECT_THAT(
        run_vorna({"tiles", folder.file("map.json"), "-o", folder.file("t"), "--zoom", "0", "--parts-of", "2", "--part", "2"})
            .errors,
        HasSubstr("--part: expected a number from 0 to 1, found 2"));
}

TEST_F(Tiles_Command, users_files_beside_databases_stay) {
    const std::string own = folder.file("a.mbtiles.vorna-database", "mine");
    const Outcome made = run("a.mbtiles");
    if (made.errors.find("need a build with SQLite") != std::string::npos) {
        GTEST_SKIP() << made.errors;
    }
    EXPECT_EQ(made.status, 0) << made.errors;
    EXPECT_EQ(read_file(own), "mine");
    EXPECT_THAT(folder.names(), testing::UnorderedElementsAre("a.mbtiles", "a.mbtiles.vorna-database", "map.json"));
}

TEST_F(Tiles_Command, refuses_what_makes_no_tiles_in_one_line) {
    std::filesystem::create_directories(folder.file("full/folder"));
    const std::string triangle = folder.file("a.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n"),
                      flange = folder.file("a.dxf", "0\nSECTION\n2\nENTITIES\n0\nPOINT\n10\n1\n20\n1\n0\nENDSEC\n0\nEOF\n"),
                      map = folder.file("map.json"), out = folder.file("out.pmtiles");
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{map, "-o", folder.file("full"), "--zoom", "0"}, "expected a new or empty folder"},
        {{map, "-o", map, "--zoom", "0"}, "expected"},
        {{map, "-o", out, "--zoom", "3-1"}, "--zoom: expected levels FROM-TO from 0 to 10"},
        {{map, "-o", out, "--zoom", "11"}, "--zoom"},
        {{map, "-o", out, "--zoom", "0-10", "--supersample", "2"}, "from 0 to 9"},
        {{map, "-o", out, "--zoom", "1x"}, "found '1x'"},
        {{map, "-o", out, "--zoom", "0", "--bbox", "170,0,-170,9"}, "--bbox: expected degrees with west below east"},
        {{map, "-o", out, "--zoom", "5", "--border", "300,4"}, "zoom level 5: expected a map that can be cut into tiles"},
        {{map, "-o", out, "--zoom", "0", "--max-memory", "4M"}, "--max-memory: expected"},
        {{triangle, "-o", out, "--zoom", "0"}, "a.obj: expected a map, found a model"},
        {{flange, "-o", out, "--zoom", "0"}, "a.dxf: expected a map, found a drawing"},
        {{"-", "-o", out, "--zoom", "0", "--resume", "--input-format", "json"}, "found standard input"},
        {{map, "-o", "-", "--zoom", "0"}, "-o: expected a folder"},
        {{map, "-o", folder.file("out.png"), "--zoom", "0"}, "expected a name that ends in .mbtiles or .pmtiles"}};
    for (const auto& [arguments, message] : cases) {
        std::vector<std::string> all{"tiles"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const Outcome outcome = run_vorna(all, shapes);
        EXPECT_EQ(outcome.status, 2) << message;
        EXPECT_THAT(outcome.errors, HasSubstr(message));
        EXPECT_EQ(std::ranges::count(outcome.errors, '\n'), 1) << outcome.errors;
    }
    EXPECT_THAT(folder.names(), testing::UnorderedElementsAre("a.dxf", "a.obj", "full", "map.json"));
}

} // namespace
} // namespace vorna::app
