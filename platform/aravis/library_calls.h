#pragma once

#include "platform/camera_device.h"

#include <arv.h>
#include <memory>
#include <string>
#include <type_traits>

namespace tessaro {

/// The camera does not answer any more, or answers to somebody else.
class CameraLostError : public CameraError {
public:
    using CameraError::CameraError;
};

struct ObjectRelease {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};

/// Holds one reference to an object of the library.
template<typename T>
using ObjectPointer = std::unique_ptr<T, ObjectRelease>;

struct ErrorRelease {
    void operator()(GError* error) const noexcept { g_error_free(error); }
};

inline bool SaysThatCameraIsGone(const GError& error) {
    if (error.domain != ARV_DEVICE_ERROR)
        return false;
    return error.code == ARV_DEVICE_ERROR_TIMEOUT || error.code == ARV_DEVICE_ERROR_NOT_CONNECTED ||
           error.code == ARV_DEVICE_ERROR_NOT_CONTROLLER || error.code == ARV_DEVICE_ERROR_TRANSFER_ERROR;
}

/// Takes over `error`, and throws it if there is one.
inline void ThrowIfSet(GError* error) {
    if (error == nullptr)
        return;
    const std::unique_ptr<GError, ErrorRelease> owner(error);
    const std::string text = error->message != nullptr ? error->message : "Unknown error";
    if (SaysThatCameraIsGone(*error))
        throw CameraLostError(text);
    throw CameraError(text);
}

/// Makes one call, `call(GError**)`, and turns the library's error into an exception.
template<typename Call>
auto Checked(Call call) {
    GError* error = nullptr;
    if constexpr (std::is_void_v<decltype(call(&error))>) {
        call(&error);
        ThrowIfSet(error);
    } else {
        const auto result = call(&error);
        ThrowIfSet(error);
        return result;
    }
}

} // namespace tessaro
