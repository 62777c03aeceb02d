#include "tests/pylon_standin/pylon_standin.h"

#include <algorithm>
#include <pylon/PylonIncludes.h>

namespace tessaro::pylon_standin {

Runtime& TheRuntime() {
    static Runtime runtime;
    return runtime;
}

void Runtime::Note(const std::string& call, const std::string& arguments) {
    calls.push_back(arguments.empty() ? call : call + " " + arguments);
    const auto fault = faults.find(call);
    if (fault == faults.end())
        return;
    const std::string text = fault->second;
    faults.erase(fault);
    throw GenICam::RuntimeException(text);
}

} // namespace tessaro::pylon_standin

namespace Pylon {

using tessaro::pylon_standin::TheRuntime;

void PylonInitialize() {
    TheRuntime().Note("PylonInitialize");
    ++TheRuntime().started;
}

void PylonTerminate() {
    --TheRuntime().started;
}

CDeviceInfo& CDeviceInfo::SetSerialNumber(const String_t& serialNumber) {
    m_serialNumber = serialNumber;
    return *this;
}

bool CDeviceInfo::SetPropertyValue(const String_t& name, const String_t& value) {
    if (std::string(name.c_str()) != "IpAddress")
        return false;
    m_ipAddress = value;
    return true;
}

CTlFactory& CTlFactory::GetInstance() {
    static CTlFactory factory;
    return factory;
}

IPylonDevice* CTlFactory::CreateFirstDevice(const CDeviceInfo& info) {
    auto& runtime = TheRuntime();
    const std::string wanted = info.GetSerialNumber().c_str();
    const std::string address = info.GetIpAddress().c_str();
    runtime.Note("CreateFirstDevice", wanted);
    const auto found = std::ranges::find_if(runtime.cameras, [&](const auto& camera) {
        return !camera->removed && (wanted.empty() || camera->serialNumber == wanted) &&
               (address.empty() || camera->ipAddress == address);
    });
    if (runtime.started == 0 || found == runtime.cameras.end())
        throw RuntimeException("No device is available or no device contains the provided device info.");
    ++runtime.devices;
    return new IPylonDevice{*found};
}

} // namespace Pylon
