#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tessaro::pylon_standin {
struct Camera;
struct Frame;
} // namespace tessaro::pylon_standin

namespace GenICam {

class gcstring {
public:
    gcstring() = default;
    gcstring(const char* text) : m_text(text) {}
    const char* c_str() const { return m_text.c_str(); }

private:
    std::string m_text;
};

class gcstring_vector {
public:
    std::size_t size() const { return m_texts.size(); }
    const gcstring& operator[](std::size_t index) const { return m_texts[index]; }
    void push_back(const gcstring& text) { m_texts.push_back(text); }
    void clear() { m_texts.clear(); }

private:
    std::vector<gcstring> m_texts;
};

/// what() would tell the place in the source as well.
class GenericException : public std::exception {
public:
    explicit GenericException(std::string description) : m_description(std::move(description)) {}
    const char* what() const noexcept override { return "an exception in a source file"; }
    virtual const char* GetDescription() const noexcept { return m_description.c_str(); }

private:
    std::string m_description;
};

class RuntimeException : public GenericException {
public:
    using GenericException::GenericException;
};

class AccessException : public GenericException {
public:
    using GenericException::GenericException;
};

class TimeoutException : public GenericException {
public:
    using GenericException::GenericException;
};

} // namespace GenICam

namespace Pylon {

using GenICam::AccessException;
using GenICam::GenericException;
using GenICam::RuntimeException;
using GenICam::TimeoutException;
using String_t = GenICam::gcstring;
using StringList_t = GenICam::gcstring_vector;

void PylonInitialize();
void PylonTerminate();

class PylonAutoInitTerm {
public:
    PylonAutoInitTerm() { PylonInitialize(); }
    PylonAutoInitTerm(const PylonAutoInitTerm&) = delete;
    PylonAutoInitTerm& operator=(const PylonAutoInitTerm&) = delete;
    ~PylonAutoInitTerm() { PylonTerminate(); }
};

class CDeviceInfo {
public:
    CDeviceInfo& SetSerialNumber(const String_t& serialNumber);
    /// The stand-in knows "IpAddress" only.
    bool SetPropertyValue(const String_t& name, const String_t& value);
    String_t GetIpAddress() const { return m_ipAddress; }
    String_t GetSerialNumber() const { return m_serialNumber; }

private:
    String_t m_serialNumber;
    String_t m_ipAddress;
};

struct IPylonDevice {
    std::shared_ptr<tessaro::pylon_standin::Camera> camera;
};

class CTlFactory {
public:
    static CTlFactory& GetInstance();
    IPylonDevice* CreateFirstDevice(const CDeviceInfo& info);
};

} // namespace Pylon
