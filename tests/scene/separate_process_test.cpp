// Work in a copy of the process: what comes of it, and of its faults.
#include <csignal>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "app/scene/separate_process.h"

namespace {

using namespace app::scene;

constexpr std::size_t memory = std::size_t{1} << 32;

} // namespace

TEST(Separate_Process, gives_what_it_made_and_tells_how_it_ended) {
    const std::vector<int> sent(3'000'000, 7); // more than a pipe holds
    std::vector<int> received;
    const auto send = [&](Process_Pipe& pipe) { pipe.write_list(sent); };
    const auto receive = [&](Process_Pipe& pipe) { received = pipe.read_list<std::vector<int>>(); };
    run_apart(memory, send, receive);
    EXPECT_EQ(received, sent);

    const auto message_of = [&](const std::function<void(Process_Pipe&)>& work) -> std::string {
        try {
            run_apart(memory, work, receive);
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
}
