#include "support/background_program.h"
#include "support/local_client.h"
#include "support/temporary_folder.h"
#include "twin/service/control_socket.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <gio/gio.h>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

namespace tessaro {
namespace {

/// Answers every line with "<line>", on a main loop that runs as long as a client of the test does.
class ControlSocketTest : public testing::Test {
protected:
    std::string Path() const { return (m_folder.Path() / "socket").string(); }

    std::unique_ptr<ControlSocket> Socket() const {
        return std::make_unique<ControlSocket>(
            Path(), [](std::string_view line) { return "<" + std::string(line) + ">"; });
    }

    template<typename Talk>
    void WhileServed(Talk talk) {
        GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
        std::thread client([&] {
            talk();
            g_idle_add(QuitLoop, loop); // within the loop: it may not run yet
        });
        g_main_loop_run(loop);
        client.join();
        g_main_loop_unref(loop);
    }

    static gboolean QuitLoop(gpointer loop) {
        g_main_loop_quit(static_cast<GMainLoop*>(loop));
        return G_SOURCE_REMOVE;
    }

    TemporaryFolder m_folder;
};

TEST_F(ControlSocketTest, AnswersLineByLine) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient client(Path());
        EXPECT_EQ(client.Ask("one"), "<one>");
        EXPECT_EQ(client.Ask(""), "<>");
        EXPECT_TRUE(client.Send("tw"));
        EXPECT_TRUE(client.Send("o\nthree\n"));
        EXPECT_EQ(client.Receive(), "<two>");
        EXPECT_EQ(client.Receive(), "<three>");
    });
}

TEST_F(ControlSocketTest, ServesSeveralClientsAtATime) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient first(Path());
        LocalClient second(Path());
        EXPECT_EQ(second.Ask("b"), "<b>");
        EXPECT_EQ(first.Ask("a"), "<a>");
    });
}

TEST_F(ControlSocketTest, LetsAClientGoThatSendsALongerLine) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient client(Path());
        client.Send(std::string(5'000, 'x') + "\n");
        EXPECT_EQ(client.Receive(), "");
        EXPECT_EQ(LocalClient(Path()).Ask("still there"), "<still there>");
    });
}

TEST_F(ControlSocketTest, LetsAClientGoThatNeverEndsItsLine) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient client(Path());
        client.Send(std::string(5'000, 'x'));
        EXPECT_EQ(client.Receive(), "");
    });
}

TEST_F(ControlSocketTest, TakesLinesOfAThousandBytesAndTheirOtherEnd) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient client(Path());
        EXPECT_EQ(client.Ask("one\r"), "<one>");
        EXPECT_EQ(client.Ask(std::string(1'000, 'x')).size(), 1'002U);
    });
}

TEST_F(ControlSocketTest, LetsAClientGoThatNeverFetchesItsAnswers) {
    const auto socket = Socket();
    WhileServed([&] {
        LocalClient client(Path());
        const std::string lines(100, '\n');
        while (client.Send(lines))
            ;
        EXPECT_EQ(LocalClient(Path()).Ask("still there"), "<still there>");
    });
}

TEST_F(ControlSocketTest, RefusesMoreThanSixteenClients) {
    const auto socket = Socket();
    WhileServed([&] {
        std::list<LocalClient> clients;
        for (int i = 0; i < 16; ++i)
            EXPECT_EQ(clients.emplace_back(Path()).Ask("in"), "<in>");
        EXPECT_EQ(LocalClient(Path()).Ask("out"), "");
        clients.pop_front();
        EXPECT_TRUE(Eventually([&] { return LocalClient(Path()).Ask("in") == "<in>"; }));
    });
}

TEST_F(ControlSocketTest, RemovesItsFile) {
    { const auto socket = Socket(); }
    EXPECT_FALSE(std::filesystem::exists(Path()));
}

TEST_F(ControlSocketTest, ReplacesAFileThatNobodyListensTo) {
    auto abandoned = Socket();
    std::filesystem::rename(Path(), Path() + ".kept");
    abandoned.reset();
    std::filesystem::rename(Path() + ".kept", Path());
    ASSERT_FALSE(LocalClient(Path()).IsConnected());
    const auto socket = Socket();
    WhileServed([&] { EXPECT_EQ(LocalClient(Path()).Ask("new"), "<new>"); });
}

TEST_F(ControlSocketTest, RefusesAPlaceWhereAnotherListens) {
    const auto first = Socket();
    EXPECT_THROW(Socket(), std::runtime_error);
    WhileServed([&] { EXPECT_EQ(LocalClient(Path()).Ask("first"), "<first>"); });
}

TEST_F(ControlSocketTest, RefusesAPlaceWhereAFileIs) {
    std::ofstream(Path()) << "precious";
    EXPECT_THROW(Socket(), std::runtime_error);
    EXPECT_TRUE(std::filesystem::is_regular_file(Path()));
}

TEST_F(ControlSocketTest, SaysWhyItCannotListen) {
    try {
        const ControlSocket socket("/nowhere/at/all", [](std::string_view) { return std::string(); });
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(std::string(error.what()).rfind("cannot listen at '/nowhere/at/all': ", 0), 0U)
            << error.what();
    }
}

} // namespace
} // namespace tessaro
