#pragma once

#include "scan/scan_listener.h"

#include <string>
#include <utility>
#include <vector>

namespace tessaro {

/// Tells several listeners, in their order. Null is nobody.
class ScanListeners : public ScanListener {
public:
    explicit ScanListeners(std::vector<ScanListener*> listeners) : m_listeners(std::move(listeners)) {
        std::erase(m_listeners, nullptr);
    }

    void ScanBegins() override {
        for (ScanListener* listener : m_listeners)
            listener->ScanBegins();
    }
    void FieldBegins() override {
        for (ScanListener* listener : m_listeners)
            listener->FieldBegins();
    }
    void FieldFinished(const ScannedField& field) override {
        for (ScanListener* listener : m_listeners)
            listener->FieldFinished(field);
    }
    void ScanEnds(ScanEnd why) override {
        for (ScanListener* listener : m_listeners)
            listener->ScanEnds(why);
    }
    void ScanNotBegun(const std::vector<std::string>& reasons) override {
        for (ScanListener* listener : m_listeners)
            listener->ScanNotBegun(reasons);
    }

private:
    std::vector<ScanListener*> m_listeners;
};

} // namespace tessaro
