#include "twin/service/control_command.h"

#include <gtest/gtest.h>

namespace tessaro {
namespace {

template<typename Command>
Command Parsed(std::string_view line) {
    const auto command = ParseControlCommand(line);
    EXPECT_TRUE(std::holds_alternative<Command>(command)) << line;
    return std::holds_alternative<Command>(command) ? std::get<Command>(command) : Command();
}

std::string ErrorOf(std::string_view line) {
    return Parsed<CommandError>(line).reason;
}

TEST(ControlCommand, MovesTheStage) {
    EXPECT_EQ(Parsed<MoveCommand>("move 1200,-30.5,4").target, (StagePosition{1200.0, -30.5, 4.0}));
}

TEST(ControlCommand, RefusesPositionsThatAreNone) {
    for (const char* text : {"", "1,2", "1,2,3,4", "1,2,", "a,2,3", "1, 2,3", "nan,0,0", "inf,0,0", "1,2,3 "})
        EXPECT_EQ(ErrorOf(std::string("move ") + text), "'" + std::string(text) + "' is no position X,Y,Z");
}

TEST(ControlCommand, SetsFaultsWithTheirUsualValues) {
    EXPECT_EQ(Parsed<Fault>("fault camera-gone").kind, FaultKind::CameraGone);
    EXPECT_EQ(Parsed<Fault>("fault lost-packets").share, 0.01);
    EXPECT_EQ(Parsed<Fault>("fault frame-size").width, 1232);
    EXPECT_EQ(Parsed<Fault>("fault frame-size").height, 1028);
    EXPECT_EQ(Parsed<Fault>("fault endless-automatic").kind, FaultKind::EndlessAutomatic);
    EXPECT_EQ(Parsed<Fault>("fault stage-pieces").piece, 0);
    EXPECT_EQ(Parsed<Fault>("fault stage-late").lateMs, 200);
}

TEST(ControlCommand, KnowsTheFaultsOfTheStage) {
    for (const auto& [name, kind] : {std::pair{"stage-silent", FaultKind::StageSilent},
                                     {"stage-no-arrival", FaultKind::StageNoArrival},
                                     {"stage-garbled", FaultKind::StageGarbled},
                                     {"stage-pieces", FaultKind::StagePieces},
                                     {"stage-late", FaultKind::StageLate},
                                     {"stage-other-axis", FaultKind::StageOtherAxis},
                                     {"stage-junk", FaultKind::StageJunk},
                                     {"stage-impossible", FaultKind::StageImpossible},
                                     {"stage-gone", FaultKind::StageGone}}) {
        EXPECT_EQ(Parsed<Fault>(std::string("fault ") + name).kind, kind);
        EXPECT_EQ(Parsed<ClearCommand>(std::string("clear ") + name).kind, kind);
    }
}

TEST(ControlCommand, AsksWhereTheStageIs) {
    Parsed<WhereCommand>("where");
    EXPECT_EQ(ErrorOf("where now"),
              "there is no command 'where now', only move, where, fault, clear and quit");
}

TEST(ControlCommand, SetsFaultsWithOtherValues) {
    EXPECT_EQ(Parsed<Fault>("fault lost-packets=0.25").share, 0.25);
    const Fault size = Parsed<Fault>("fault frame-size=640x480");
    EXPECT_EQ(size.kind, FaultKind::FrameSize);
    EXPECT_EQ(size.width, 640);
    EXPECT_EQ(size.height, 480);
    EXPECT_EQ(Parsed<Fault>("fault stage-pieces=3").piece, 3);
    EXPECT_EQ(Parsed<Fault>("fault stage-late=1500").lateMs, 1500);
}

TEST(ControlCommand, RefusesValuesThatAFaultCannotHave) {
    for (const char* text : {"lost-packets=1.01", "lost-packets=-0.1", "lost-packets=", "lost-packets=nan",
                             "frame-size=640", "frame-size=15x16", "frame-size=16x5000", "frame-size=x",
                             "camera-gone=1", "stage-pieces=0", "stage-pieces=101", "stage-late=0",
                             "stage-late=60001", "stage-late=soon", "stage-silent=1", "stage-gone="}) {
        const std::string value = std::string(text).substr(std::string(text).find('=') + 1);
        EXPECT_EQ(ErrorOf(std::string("fault ") + text), "'" + value + "' is no value for this fault");
    }
}

TEST(ControlCommand, ClearsAFaultByItsName) {
    EXPECT_EQ(Parsed<ClearCommand>("clear lost-packets").kind, FaultKind::LostPackets);
}

TEST(ControlCommand, NamesTheFaultsThereAre) {
    const std::string reason =
        "there is no fault 'fire', only camera-gone, lost-packets, frame-size, endless-automatic, "
        "stage-silent, "
        "stage-no-arrival, stage-garbled, stage-pieces, stage-late, stage-other-axis, stage-junk, "
        "stage-impossible, stage-gone";
    EXPECT_EQ(ErrorOf("fault fire"), reason);
    EXPECT_EQ(ErrorOf("clear fire"), reason);
}

TEST(ControlCommand, Quits) {
    Parsed<QuitCommand>("quit");
    EXPECT_EQ(ErrorOf("quit now"), "there is no command 'quit now', only move, where, fault, clear and quit");
    EXPECT_EQ(ErrorOf(""), "there is no command '', only move, where, fault, clear and quit");
}

} // namespace
} // namespace tessaro
