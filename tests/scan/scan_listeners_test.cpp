#include "scan/scan_listeners.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tessaro {
namespace {

class Noting : public ScanListener {
public:
    Noting(std::string name, std::vector<std::string>& heard) : m_name(std::move(name)), m_heard(heard) {}
    void ScanBegins() override { m_heard.push_back(m_name + " begins"); }
    void FieldBegins() override { m_heard.push_back(m_name + " field"); }
    void FieldFinished(const ScannedField& field) override {
        m_heard.push_back(m_name + " column " + std::to_string(field.column));
    }
    void ScanEnds(ScanEnd why) override {
        m_heard.push_back(m_name + (why == ScanEnd::FocusFailed ? " out of focus" : " ends"));
    }
    void ScanNotBegun(const std::vector<std::string>& reasons) override {
        m_heard.push_back(m_name + " not begun: " + reasons.at(0));
    }

private:
    std::string m_name;
    std::vector<std::string>& m_heard;
};

TEST(ScanListeners, AllHearInTheirOrder) {
    std::vector<std::string> heard;
    Noting first("first", heard);
    Noting second("second", heard);
    ScanListeners both({&first, nullptr, &second});
    both.ScanBegins();
    both.FieldBegins();
    both.FieldFinished({0, 3, {}});
    both.ScanEnds(ScanEnd::FocusFailed);
    EXPECT_EQ(heard, (std::vector<std::string>{"first begins", "second begins", "first field", "second field",
                                               "first column 3", "second column 3", "first out of focus",
                                               "second out of focus"}));
    heard.clear();
    both.ScanNotBegun({"no stage"});
    EXPECT_EQ(heard, (std::vector<std::string>{"first not begun: no stage", "second not begun: no stage"}));
}

TEST(ScanListeners, MayBeNobody) {
    ScanListeners nobody({nullptr});
    nobody.ScanBegins();
    nobody.FieldFinished({});
    nobody.ScanEnds(ScanEnd::Completed);
}

} // namespace
} // namespace tessaro
