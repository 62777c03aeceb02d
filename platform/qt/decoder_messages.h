#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessaro {

/// What the image libraries say on this thread while this object lives. They report much of the damage that
/// they find only as a message and go on with made-up pixels, so the messages are part of the result of
/// decoding.
///
/// Messages of other threads, and of other parts of Qt, go where they would have gone. One object a thread.
class DecoderMessages {
public:
    enum class Severity { Warning, Error };
    struct Message {
        Severity severity;
        std::string source; // the logging category in Qt, the function in the TIFF library
        std::string text;
    };

    DecoderMessages();
    ~DecoderMessages();
    DecoderMessages(const DecoderMessages&) = delete;
    DecoderMessages& operator=(const DecoderMessages&) = delete;

    void Add(Severity severity, std::string_view source, std::string text);
    const std::vector<Message>& All() const { return m_messages; }

private:
    std::vector<Message> m_messages;
};

} // namespace tessaro
