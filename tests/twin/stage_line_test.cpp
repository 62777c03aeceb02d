#include "support/background_program.h"
#include "support/program.h"
#include "support/stage_host.h"
#include "support/temporary_folder.h"
#include "twin/stage/stage_line.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <glib.h>
#include <memory>
#include <stdexcept>
#include <sys/ioctl.h>
#include <termios.h>

namespace tessaro {
namespace {

class StageLineTest : public testing::Test {
protected:
    std::string Link() const { return (m_folder.Path() / "stage").string(); }

    void Serve(const std::string& link) { m_line = std::make_unique<StageLine>(m_wire, link); }
    void Serve() { Serve(Link()); }

    /// On terminals that are made ready for the next client in this way.
    void ServeRenewing(StageLine::Renewal renew) {
        m_line = std::make_unique<StageLine>(m_wire, Link(), std::move(renew));
    }
    static bool CannotBeOpened(const PseudoTerminal& /*terminal*/) { return false; }

    std::string ErrorOfServing() {
        try {
            Serve();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "served";
    }

    /// Lets the main loop run until the condition holds; false when that takes too long.
    static bool RunUntil(const std::function<bool()>& condition) {
        constexpr guint wakeMs = 2;
        constexpr gint64 limitUs = 20'000'000;
        const guint waker = g_timeout_add(
            wakeMs, [](void*) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        const gint64 deadline = g_get_monotonic_time() + limitUs;
        while (!condition() && g_get_monotonic_time() < deadline)
            g_main_context_iteration(nullptr, TRUE);
        g_source_remove(waker);
        return condition();
    }

    bool Answers(const StageHost& host, const std::string& query, const std::string& answer) {
        std::string heard = host.Read();
        return host.Send(query) && RunUntil([&] {
                   heard += host.Read();
                   return heard == answer + '\0';
               });
    }

    /// Whether the main loop has anything to do by itself.
    static bool IsIdle() {
        std::array<GPollFD, 10> files = {};
        int timeout = 0;
        int priority = 0;
        while (g_main_context_iteration(nullptr, FALSE) != 0) {
        }
        g_main_context_prepare(g_main_context_default(), &priority);
        g_main_context_query(g_main_context_default(), G_MAXINT, &timeout, files.data(),
                             static_cast<int>(files.size()));
        return timeout == -1;
    }

    TemporaryFolder m_folder;
    StageAxes m_axes{{}, {{-1000.0, -1000.0, -1000.0}, {5000.0, 5000.0, 5000.0}}, 1.0};
    std::vector<std::string> m_log;
    StageController m_controller{m_axes, [this](std::string_view text, double) { m_log.emplace_back(text); }};
    StageWire m_wire{m_controller};
    std::unique_ptr<StageLine> m_line;
};

TEST_F(StageLineTest, HasANameThatProgramsCanOpen) {
    Serve("");
    const StageHost host(m_line->Name());
    ASSERT_NE(host.File(), -1);
    EXPECT_TRUE(Answers(host, "p", "0"));
}

TEST_F(StageLineTest, HasALinkAsLongAsItIsServed) {
    Serve();
    EXPECT_EQ(std::filesystem::read_symlink(Link()).string(), m_line->Name());
    m_line.reset();
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(Link())));
}

TEST_F(StageLineTest, ReplacesALinkThatWasLeftBehind) {
    std::filesystem::create_symlink("/dev/pts/98765", Link());
    Serve();
    EXPECT_EQ(std::filesystem::read_symlink(Link()).string(), m_line->Name());
}

TEST_F(StageLineTest, RefusesToReplaceAnythingElse) {
    std::ofstream(Link()) << "precious";
    const std::string refused = "cannot link the stage's line at '" + Link() + "': something else is there";
    EXPECT_EQ(ErrorOfServing(), refused);
    EXPECT_EQ(ReadText(Link()), "precious");
    std::filesystem::remove(Link());
    std::filesystem::create_symlink("/dev/null", Link());
    EXPECT_EQ(ErrorOfServing(), refused);
    std::filesystem::remove(Link());
    std::filesystem::create_directory(Link());
    EXPECT_EQ(ErrorOfServing(), refused);
}

TEST_F(StageLineTest, SaysWhyThereCanBeNoLink) {
    const std::string path = m_folder.Path().string() + "/none/stage";
    try {
        Serve(path);
        FAIL() << "served";
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "cannot link the stage's line at '" + path + "': No such file or directory");
    }
}

TEST_F(StageLineTest, LeavesALinkThatSomebodyElseMadeMeanwhile) {
    Serve();
    std::filesystem::remove(Link());
    std::filesystem::create_symlink("/dev/pts/98765", Link());
    m_line.reset();
    EXPECT_EQ(std::filesystem::read_symlink(Link()), "/dev/pts/98765");
}

TEST_F(StageLineTest, IsRaw) {
    Serve();
    const StageHost host(Link());
    termios settings = {};
    ASSERT_EQ(tcgetattr(host.File(), &settings), 0);
    EXPECT_EQ(settings.c_lflag & (ECHO | ICANON | ISIG | IEXTEN), 0U);
    EXPECT_EQ(settings.c_iflag & (ICRNL | INLCR | IXON | ISTRIP), 0U);
    EXPECT_EQ(settings.c_oflag & OPOST, 0U);
    EXPECT_EQ(cfgetospeed(&settings), static_cast<speed_t>(B9600));
}

TEST_F(StageLineTest, CarriesEveryByteAsItIs) {
    Serve();
    const StageHost host(Link());
    const std::string odd = "\x03\r\n\x11\x7f\xff";
    ASSERT_TRUE(host.Send(odd));
    EXPECT_TRUE(RunUntil([&] { return m_log == std::vector<std::string>{odd}; }));
}

TEST_F(StageLineTest, TakesTheTimeOfASlowLine) {
    Serve();
    const StageHost host(Link());
    const double begun = StageSeconds();
    ASSERT_TRUE(host.Send("m0000000000000001") && host.Send("p"));
    std::string heard;
    ASSERT_TRUE(RunUntil([&] { return (heard += host.Read()).ends_with('\0'); }));
    EXPECT_GE(StageSeconds() - begun, 22 * StageWire::byteSeconds) << "20 bytes there and 2 back";
}

TEST_F(StageLineTest, TakesMoreThanItHasRoomForAtATime) {
    Serve();
    const StageHost host(Link());
    for (int i = 0; i < 40; ++i)
        ASSERT_TRUE(host.Send("n") && host.Send("?"));
    EXPECT_TRUE(RunUntil([&] { return m_log.size() == 80; }));
}

TEST_F(StageLineTest, CommandsCountThatWereWrittenBeforeTheLineWasClosed) {
    Serve();
    {
        const StageHost host(Link());
        ASSERT_TRUE(host.Send("m16"));
    }
    EXPECT_TRUE(RunUntil([&] { return m_axes.PositionAt(StageSeconds()).x == 10.0; }));
}

TEST_F(StageLineTest, WhatIsSaidWhileNobodyHasItOpenIsLost) {
    Serve();
    {
        const StageHost host(Link());
        ASSERT_TRUE(host.Send("m300"));
    }
    ASSERT_TRUE(RunUntil([&] { return m_axes.PositionAt(StageSeconds()).x > 100.0; }));
    ASSERT_TRUE(RunUntil([&] { return !std::isfinite(m_wire.NextTime()); }));
    const StageHost next(Link());
    EXPECT_EQ(next.Read(), "");
    EXPECT_TRUE(Answers(next, "p", "300"));
}

TEST_F(StageLineTest, TheNextClientFindsNothingThatTheOneBeforeDidNotRead) {
    Serve();
    {
        const StageHost host(Link());
        ASSERT_TRUE(host.Send("p"));
        ASSERT_TRUE(RunUntil([&] { return m_log.size() == 1; }));
        ASSERT_TRUE(RunUntil([&] { return !std::isfinite(m_wire.NextTime()); }));
    }
    ASSERT_TRUE(Eventually(IsIdle));
    const StageHost next(Link());
    EXPECT_EQ(next.Read(), "");
    EXPECT_TRUE(Answers(next, "Q", "0"));
}

TEST_F(StageLineTest, TheNextClientFindsItRawWhateverTheOneBeforeDid) {
    Serve();
    {
        const StageHost host(Link());
        termios settings = {};
        ASSERT_EQ(tcgetattr(host.File(), &settings), 0);
        settings.c_lflag |= ECHO | ICANON;
        ASSERT_EQ(tcsetattr(host.File(), TCSANOW, &settings), 0);
    }
    ASSERT_TRUE(Eventually(IsIdle));
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "p", "0"));
}

TEST_F(StageLineTest, TheNextClientDoesNotEndACommandThatTheOneBeforeBegan) {
    Serve();
    {
        const StageHost host(Link());
        ASSERT_TRUE(host.Send("m9"));
        ASSERT_EQ(write(host.File(), "m9", 2), 2);
    }
    ASSERT_TRUE(Eventually(IsIdle));
    const StageHost next(Link());
    ASSERT_TRUE(next.Send("60"));
    ASSERT_TRUE(RunUntil([&] { return m_log == std::vector<std::string>{"m9", "60"}; }));
    EXPECT_TRUE(Answers(next, "p", "9"));
}

TEST_F(StageLineTest, TheNextClientsCommandsDoNotFollowAnEcho) {
    Serve();
    {
        const StageHost host(Link());
        termios settings = {};
        ASSERT_EQ(tcgetattr(host.File(), &settings), 0);
        settings.c_lflag |= ECHO | ECHOCTL | ICANON; // the echo of "0" and its NUL is "0^@"
        ASSERT_EQ(tcsetattr(host.File(), TCSANOW, &settings), 0);
        ASSERT_TRUE(host.Send("Q"));
        ASSERT_TRUE(RunUntil([&] { return m_log.size() == 1; }));
        ASSERT_TRUE(RunUntil([&] { return m_wire.Room() == 0; })) << "the echo comes";
    }
    ASSERT_TRUE(Eventually(IsIdle));
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "P", "0"));
    EXPECT_EQ(m_log, (std::vector<std::string>{"Q", "P"}));
}

TEST_F(StageLineTest, TheNextClientGetsNoAnswersToTheOneBefore) {
    Serve();
    {
        const StageHost host(Link());
        for (int i = 0; i < 500; ++i)
            ASSERT_TRUE(host.Send("p"));
        ASSERT_TRUE(RunUntil([&] { return m_log.size() > 10; }));
    }
    ASSERT_TRUE(RunUntil([&] { return m_log.size() == 500; })) << "all came";
    const StageHost next(Link());
    ASSERT_TRUE(next.Send("m0"));
    std::string heard;
    ASSERT_TRUE(RunUntil([&] { return (heard += next.Read()).ends_with('\0'); }));
    EXPECT_EQ(heard, std::string("X\0", 2));
}

TEST_F(StageLineTest, CanBeOpenedAgainWhenAClientDiedThatHadItForItselfAlone) {
    Serve();
    {
        const StageHost host(Link());
        ASSERT_EQ(ioctl(host.File(), TIOCEXCL), 0);
    }
    ASSERT_TRUE(Eventually(IsIdle));
    const StageHost next(Link()); // root may always; others find another terminal at the link
    ASSERT_NE(next.File(), -1);
    EXPECT_TRUE(Answers(next, "p", "0"));
}

TEST_F(StageLineTest, IsAnotherTerminalAtItsLinkOnceItCannotBeOpenedAnyMore) {
    ServeRenewing(CannotBeOpened);
    std::vector<std::string> names = {m_line->Name()};
    m_line->TellNewNames([&](const std::string& name) { names.push_back(name); });
    {
        const StageHost host(Link());
        ASSERT_TRUE(Answers(host, "p", "0"));
        ASSERT_EQ(write(host.File(), "m9", 2), 2);
    }
    ASSERT_TRUE(RunUntil([&] { return names.size() == 2; }));
    EXPECT_EQ(m_line->Name(), names[1]);
    EXPECT_EQ(std::filesystem::read_symlink(Link()).string(), names[1]);
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "P", "0"));
    EXPECT_EQ(m_log, (std::vector<std::string>{"p", "P"})) << "what was begun is forgotten here too";
}

TEST_F(StageLineTest, IsKeptWhereTheNextClientWasFasterThanTheRenewal) {
    std::unique_ptr<StageHost> next;
    ServeRenewing([&](const PseudoTerminal& terminal) {
        next = std::make_unique<StageHost>(terminal.Name());
        return false;
    });
    const std::string name = m_line->Name();
    { const StageHost host(Link()); }
    ASSERT_TRUE(RunUntil([&] { return next != nullptr; }));
    EXPECT_EQ(m_line->Name(), name);
    EXPECT_TRUE(Answers(*next, "p", "0"));
    m_line->TellNewNames([](const std::string& other) { ADD_FAILURE() << other; });
}

TEST_F(StageLineTest, IsUnpluggedWhenThereCanBeNoOtherTerminalAtItsLink) {
    ServeRenewing(CannotBeOpened);
    {
        const StageHost host(Link());
        ASSERT_TRUE(Answers(host, "p", "0"));
        std::filesystem::remove(Link());
        std::ofstream(Link()) << "precious";
    }
    EXPECT_TRUE(RunUntil([&] { return m_line->Name().empty(); }));
    EXPECT_EQ(ReadText(Link()), "precious");
    EXPECT_TRUE(IsIdle());
    std::filesystem::remove(Link());
    m_line->PlugIn();
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "p", "0"));
}

TEST_F(StageLineTest, TellsItsNewNameWhenItIsPluggedInAgain) {
    Serve();
    std::vector<std::string> names;
    m_line->TellNewNames([&](const std::string& name) { names.push_back(name); });
    m_line->PlugIn();
    EXPECT_TRUE(names.empty()) << "it was not unplugged";
    m_line->Unplug();
    m_line->PlugIn();
    EXPECT_EQ(names, std::vector<std::string>{m_line->Name()});
}

TEST_F(StageLineTest, CostsNothingAsLongAsNothingHappens) {
    Serve();
    EXPECT_TRUE(IsIdle()) << "not opened yet";
    {
        const StageHost host(Link());
        EXPECT_TRUE(Answers(host, "p", "0"));
        EXPECT_TRUE(Eventually(IsIdle)) << "open";
    }
    EXPECT_TRUE(Eventually(IsIdle)) << "closed again";
}

TEST_F(StageLineTest, HangsUpWhenItIsUnpluggedAndComesBackAtTheSameLink) {
    Serve();
    const StageHost host(Link());
    ASSERT_TRUE(Answers(host, "p", "0"));
    m_line->Unplug();
    EXPECT_TRUE(host.IsHungUpOn());
    EXPECT_EQ(m_line->Name(), "");
    EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(Link())));
    m_line->Unplug();
    m_line->PlugIn();
    m_line->PlugIn();
    EXPECT_TRUE(host.IsHungUpOn()) << "a line that was opened before it stays dead";
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "p", "0"));
}

TEST_F(StageLineTest, TheStageGoesOnWhileTheLineIsUnplugged) {
    Serve();
    const StageHost host(Link());
    ASSERT_TRUE(host.Send("m100"));
    ASSERT_TRUE(RunUntil([&] { return m_axes.MovesAt(0, StageSeconds()); }));
    m_line->Unplug();
    ASSERT_TRUE(RunUntil([&] { return !std::isfinite(m_wire.NextTime()); }));
    m_line->PlugIn();
    const StageHost next(Link());
    EXPECT_TRUE(Answers(next, "p", "100"));
}

TEST_F(StageLineTest, DoesNotKeepWhatWaitsOnceRepliesAreLateNoMore) {
    Serve();
    const StageHost host(Link());
    m_wire.Faults().lateSeconds = 60.0;
    ASSERT_TRUE(host.Send("p") && host.Send("P") && host.Send("Q"));
    ASSERT_TRUE(RunUntil([&] { return m_log.size() == 3; }));
    const double cleared = StageSeconds();
    m_wire.Faults().lateSeconds = 0.0;
    m_line->Serve();
    std::vector<double> times;
    std::string heard;
    for (const std::size_t bytes : {2U, 4U, 6U}) {
        ASSERT_TRUE(RunUntil([&] { return (heard += host.Read()).size() >= bytes; })) << bytes;
        times.push_back(StageSeconds());
    }
    EXPECT_GE(times[2] - times[0], 2 * StageWire::gapSeconds - 0.005) << "each by itself";
    EXPECT_LT(times[2] - cleared, 30.0);
}

TEST_F(StageLineTest, StandsAHostThatDoesNotReadTheJunkItGets) {
    Serve();
    const StageHost host(Link());
    m_wire.StartJunk(StageSeconds());
    m_line->Serve();
    ASSERT_TRUE(host.Send("m16"));
    EXPECT_TRUE(RunUntil([&] { return m_axes.PositionAt(StageSeconds()).x == 10.0; }));
    m_wire.StopJunk();
    ASSERT_TRUE(Eventually(IsIdle));
    EXPECT_GT(host.Read().size(), 1000U);
    EXPECT_TRUE(Answers(host, "p", "16")) << "the rest of the junk is lost";
}

} // namespace
} // namespace tessaro
