// Work in a copy of the process: its results, its limits and its failures.
#include <atomic>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include "drawing/files/address_sanitizer.h"
#include "drawing/model/mesh.h"
#include "drawing/model/model_reader.h"
#include "drawing/model/separate_process.h"

namespace {

using namespace vorna::drawing::model;

constexpr Process_Limits limits{std::size_t{1} << 32, 60};

int open_nothing(const std::string&) {
    return -1;
}

} // namespace

TEST(Separate_Process, gives_what_it_made_and_tells_how_it_ended) {
    const std::vector<int> sent(3'000'000, 7); // more than a pipe holds
    std::vector<int> received;
    const auto send = [&](Process_Pipe& pipe) { pipe.write_list(sent); };
    const auto receive = [&](Process_Pipe& pipe) { received = pipe.read_list<std::vector<int>>(); };
    run_apart(limits, open_nothing, send, receive);
    EXPECT_EQ(received, sent);

    const auto message_of = [&](const std::function<void(Process_Pipe&)>& work,
                                const Process_Limits& most = limits) -> std::string {
        try {
            run_apart(most, open_nothing, work, receive);
        } catch (const Broken_Off& error) {
            return error.what();
        }
        return "no error";
    };
    EXPECT_THAT(message_of([](Process_Pipe&) { std::raise(SIGKILL); }), testing::StartsWith("signal 9"));
    EXPECT_THAT(message_of([&](Process_Pipe& pipe) {
                    send(pipe);
                    std::raise(SIGKILL); // after everything has arrived
                }),
                testing::StartsWith("signal 9"));
    EXPECT_EQ(message_of([](Process_Pipe&) { throw 1; }), "status 1");
    EXPECT_EQ(message_of([](Process_Pipe& pipe) { pipe.write_value(SIZE_MAX); }), "status 0"); // announced, and never sent
    const auto compute = [](Process_Pipe&) {
        for (std::atomic<int> i = 0;; ++i) {
        }
    };
    EXPECT_THAT(message_of(compute, {limits.bytes, 1}), testing::StartsWith("signal 24")); // of a limit of time
    EXPECT_EQ(message_of(send, {sent.size(), 60}), "sending too much");
}

#if defined(__linux__)
TEST(Separate_Process, ends_with_its_parent) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
    const pid_t parent = fork();
    if (parent == 0) {
        close(ends[0]);
        const auto open_socket = [&](const std::string&) { return dup(ends[1]); };
        run_apart(
            limits, open_socket,
            [](Process_Pipe& pipe) {
                const int file = pipe.request_file("socket");
                (void)!write(file, "1", 1);
                for (std::atomic<int> i = 0;; ++i) {
                }
            },
            [](Process_Pipe& pipe) { pipe.read_value<char>(); });
        _exit(1);
    }
    close(ends[1]);
    char byte = 0;
    EXPECT_EQ(read(ends[0], &byte, 1), 1); // the copy computes
    kill(parent, SIGKILL);
    EXPECT_EQ(waitpid(parent, nullptr, 0), parent);
    timeval most{10, 0};
    setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &most, sizeof most);
    EXPECT_EQ(read(ends[0], &byte, 1), 0); // closed by the end of the copy
    close(ends[0]);
}
#endif

// What the copy may not do it is tried with: each attempt sends whether it came to anything.
TEST(Separate_Process, can_open_only_what_it_is_given) {
    const std::string allowed = testing::TempDir() + "separate_process_test.txt", refused = "/etc/passwd";
    std::ofstream(allowed) << "given";
    const auto open_allowed = [&](const std::string& name) {
        errno = EACCES;
        return name == allowed ? open(name.c_str(), O_RDONLY) : -1;
    };
    const std::vector<std::pair<std::string, std::function<bool()>>> attempts {
        {"read a file", [&] { return open(refused.c_str(), O_RDONLY) >= 0; }},
            {"write a file", [&] { return open((allowed + ".new").c_str(), O_WRONLY | O_CREAT, 0600) >= 0; }},
#if defined(VORNA_WITH_SECCOMP)
            {"connect", [] { return socket(AF_INET, SOCK_STREAM, 0) >= 0; }},
            {"start a process",
             [] {
                 const pid_t started = fork();
                 if (started == 0) {
                     _exit(0);
                 }
                 return started > 0;
             }},
            {"signal another", [] { return kill(getppid(), 0) == 0; }},
            {"remove a file", [&] { return unlink(allowed.c_str()) == 0; }},
            {"run what it writes",
             [] { return mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED; }},
#endif
    };
    std::string given;
    std::vector<char> outcomes;
    run_apart(
        limits, open_allowed,
        [&](Process_Pipe& pipe) {
            char text[6] = {};
            const bool is_refused = pipe.request_file(refused) == -1 && errno == EACCES;
            const int file = pipe.request_file(allowed);
            const bool is_read = read(file, text, 5) == 5;
            std::vector<char> sent;
            for (const auto& attempt : attempts) {
                sent.push_back(attempt.second());
            }
            pipe.write_list(std::string(is_refused && is_read ? text : "nothing"));
            pipe.write_list(sent);
        },
        [&](Process_Pipe& pipe) {
            given = pipe.read_list<std::string>();
            outcomes = pipe.read_list<std::vector<char>>();
        });
    std::remove(allowed.c_str());
    EXPECT_EQ(given, "given");
#if !defined(HAS_ADDRESS_SANITIZER) && !defined(HAS_THREAD_SANITIZER) // whose reports need other files and programs
    ASSERT_EQ(outcomes.size(), attempts.size());
    for (std::size_t i = 0; i < attempts.size(); ++i) {
        EXPECT_FALSE(outcomes[i]) << attempts[i].first;
    }
#endif
}

TEST(Separate_Process, is_not_believed) {
    const auto triangle = [] {
        Mesh mesh;
        mesh.positions = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
        mesh.triangles = {0, 1, 2};
        mesh.triangle_materials = {0};
        mesh.materials.resize(1);
        mesh.materials[0].image = 0;
        mesh.images.resize(1);
        mesh.images[0].name = "picture.png";
        return mesh;
    };
    EXPECT_TRUE(is_consistent(triangle()));
    const std::vector<std::function<void(Mesh&)>> spoilers{
        [](Mesh& m) { m.positions[1].y = INFINITY; },
        [](Mesh& m) {
            m.normals = {{NAN, 0, 0}, {}, {}};
        },
        [](Mesh& m) { m.normals.resize(2); },
        [](Mesh& m) { m.colors.resize(4); },
        [](Mesh& m) { m.coordinates.resize(1); },
        [](Mesh& m) { m.triangles.push_back(0); },
        [](Mesh& m) { m.triangles[2] = 3; },
        [](Mesh& m) { m.diagonals.resize(2); },
        [](Mesh& m) { m.triangle_materials = {1}; },
        [](Mesh& m) {
            m.triangle_materials = {0, 0};
        },
        [](Mesh& m) { m.materials[0].image = 1; },
        [](Mesh& m) { m.materials[0].wrap_v = static_cast<vorna::drawing::Wrap>(3); },
        [](Mesh& m) { m.materials[0].transparency = static_cast<Transparency>(-1); },
        [](Mesh& m) { m.materials[0].opacity = NAN; },
        [](Mesh& m) { m.images[0].bytes = "bytes of a file elsewhere"; },
        [](Mesh& m) {
            m.images[0] = {.name = "inside", .embedded = true, .bytes = std::string(15, ' '), .width = 2, .height = 2};
        },
        [](Mesh& m) { m.images[0] = {.name = "inside", .embedded = true, .width = -1}; },
    };
    for (std::size_t i = 0; i < spoilers.size(); ++i) {
        Mesh mesh = triangle();
        spoilers[i](mesh);
        EXPECT_FALSE(is_consistent(mesh)) << "spoiler " << i;
    }
}

// The model has two triangles, each with a material whose image is inside the model. Without the key it has no images. Images of
// the same bytes are one.
TEST(Separate_Process, images_inside_models_are_taken_from_the_memory) {
    static constexpr std::size_t image_bytes = 60'000;
    const auto taken_by = [](const char* texture_key, std::size_t images, const char* second_end = "AAAB") {
        const auto image = [](const char* end) {
            return R"({"uri":"data:image/png;base64,)" + std::string(image_bytes / 3 * 4 - 4, 'A') + end + "\"}";
        };
        const auto mesh = [](const char* number) {
            return R"({"primitives":[{"attributes":{"POSITION":0},"material":)" + std::string(number) + "}]}";
        };
        const auto material = [texture_key](const char* number) {
            return R"({"pbrMetallicRoughness":{")" + std::string(texture_key) + R"(":{"index":)" + number + "}}}";
        };
        vorna::drawing::Input input{.name = "m.gltf", .suffix = "gltf"};
        input.content = R"({"asset":{"version":"2.0"},"scenes":[{"nodes":[0,1]}],"nodes":[{"mesh":0},{"mesh":1}],"meshes":[)" +
                        mesh("0") + "," + mesh("1") + R"(],"materials":[)" + material("0") + "," + material("1") +
                        R"(],"textures":[{"source":0},{"source":1}],"images":[)" + image("AAAA") + "," + image(second_end) +
                        R"(],"buffers":[{"byteLength":36,"uri":"data:application/octet-stream;base64,)"
                        "AAAAAAAAAAAAAAAAAACAPwAAAAAAAAAAAAAAAAAAgD8AAAAA"
                        R"("}],"bufferViews":[{"buffer":0,"byteLength":36}],"accessors":[{"bufferView":0,"componentType":5126,)"
                        R"("count":3,"type":"VEC3","min":[0,0,0],"max":[1,1,0]}]})";
        vorna::drawing::Load_Limits memory(std::uint64_t{1} << 30);
        const std::uint64_t before = memory.memory_left();
        const Mesh read = read_with_assimp(input, memory);
        EXPECT_EQ(read.images.size(), images);
        for (const Image_Source& found : read.images) {
            EXPECT_TRUE(found.embedded);
            EXPECT_EQ(found.bytes.size(), image_bytes);
        }
        return before - memory.memory_left();
    };
    const std::uint64_t without = taken_by("unknown", 0);
    EXPECT_EQ(taken_by("baseColorTexture", 2) - without, 2 * image_bytes);
    EXPECT_EQ(taken_by("baseColorTexture", 1, "AAAA") - without, image_bytes);
}
