#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace tessaro {

/// What a GigE Vision camera says when it is asked who controls it. Unclear: it is there, but does not say.
enum class CameraAnswer { None, Free, Controlled, Unclear };

/// An IPv4 address in dotted form, in network byte order; nothing for any other text.
std::optional<std::uint32_t> ParseAddress(const std::string& text);

/// What `datagram` says in answer to the question of that number; None when it is no answer to that.
CameraAnswer MeaningOf(std::span<const std::uint8_t> datagram, std::uint8_t number);

/// Asks the camera at `address` (network byte order) with a datagram from a socket of its own: whether it is
/// there can be told in a fraction of a second, while the library's calls wait for 2.5 s before they fail,
/// one after the other. Changes nothing in the camera. None after three questions without an answer, at once
/// when the machine at the address refuses.
CameraAnswer AskCamera(std::uint32_t address);

} // namespace tessaro
