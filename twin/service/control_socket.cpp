#include "twin/service/control_socket.h"

#include <gio/gio.h>
#include <gio/gunixsocketaddress.h>
#include <glib/gstdio.h>
#include <memory>
#include <stdexcept>
#include <utility>

namespace tessaro {
namespace {

constexpr gsize longestLine = 1000; // bytes; a client that sends a longer one is let go

struct Unreference {
    void operator()(void* object) const { g_object_unref(object); }
};
template<typename Object>
using Reference = std::unique_ptr<Object, Unreference>;

/// One client: reads a line, answers it, reads the next; goes away with the connection.
class Client {
public:
    Client(GSocketConnection* connection, const ControlSocket::Answer& answer)
        : m_connection(G_SOCKET_CONNECTION(g_object_ref(connection))),
          m_input(g_data_input_stream_new(g_io_stream_get_input_stream(G_IO_STREAM(connection)))),
          m_answer(answer) {
        g_buffered_input_stream_set_buffer_size(G_BUFFERED_INPUT_STREAM(m_input.get()), longestLine);
    }

    /// From here on the client belongs to the main loop.
    static void Read(std::unique_ptr<Client> client) {
        GDataInputStream* const input = client->m_input.get();
        g_data_input_stream_read_line_async(input, G_PRIORITY_DEFAULT, nullptr, OnLine, client.release());
    }

private:
    static void OnLine(GObject* input, GAsyncResult* result, gpointer data) {
        std::unique_ptr<Client> client(static_cast<Client*>(data));
        gsize length = 0;
        const std::unique_ptr<char, decltype(&g_free)> line(
            g_data_input_stream_read_line_finish(G_DATA_INPUT_STREAM(input), result, &length, nullptr),
            g_free);
        if (line != nullptr && length <= longestLine &&
            client->Write(client->m_answer({line.get(), length}) + "\n"))
            Read(std::move(client));
    }

    bool Write(const std::string& text) {
        GOutputStream* const output = g_io_stream_get_output_stream(G_IO_STREAM(m_connection.get()));
        return g_output_stream_write_all(output, text.data(), text.size(), nullptr, nullptr, nullptr) != 0;
    }

    Reference<GSocketConnection> m_connection;
    Reference<GDataInputStream> m_input;
    const ControlSocket::Answer& m_answer;
};

/// A file left behind by a process that is gone; one that somebody listens to is not.
void RemoveAbandoned(const std::string& path, GSocketAddress* address) {
    if (g_file_test(path.c_str(), G_FILE_TEST_EXISTS) == 0 ||
        g_file_test(path.c_str(), G_FILE_TEST_IS_REGULAR) != 0)
        return;
    const Reference<GSocketClient> client(g_socket_client_new());
    GError* error = nullptr;
    GSocketConnection* const connection =
        g_socket_client_connect(client.get(), G_SOCKET_CONNECTABLE(address), nullptr, &error);
    if (connection != nullptr) {
        g_object_unref(connection);
        return;
    }
    if (g_error_matches(error, G_IO_ERROR, G_IO_ERROR_CONNECTION_REFUSED) != 0)
        g_remove(path.c_str());
    g_error_free(error);
}

} // namespace

ControlSocket::ControlSocket(std::string path, Answer answer)
    : m_path(std::move(path)), m_answer(std::move(answer)), m_service(g_socket_service_new()) {
    const Reference<GSocketAddress> address(g_unix_socket_address_new(m_path.c_str()));
    RemoveAbandoned(m_path, address.get());
    GError* error = nullptr;
    if (g_socket_listener_add_address(G_SOCKET_LISTENER(m_service), address.get(), G_SOCKET_TYPE_STREAM,
                                      G_SOCKET_PROTOCOL_DEFAULT, nullptr, nullptr, &error) == 0) {
        const std::string reason = error->message;
        g_error_free(error);
        g_object_unref(m_service);
        throw std::runtime_error("cannot listen at '" + m_path + "': " + reason);
    }
    g_signal_connect(m_service, "incoming", G_CALLBACK(OnClient), this);
    g_socket_service_start(m_service);
}

ControlSocket::~ControlSocket() {
    g_socket_service_stop(m_service);
    g_socket_listener_close(G_SOCKET_LISTENER(m_service));
    g_object_unref(m_service);
    g_remove(m_path.c_str());
}

int ControlSocket::OnClient(GSocketService* /*service*/, GSocketConnection* connection, void* /*source*/,
                            void* self) {
    Client::Read(std::make_unique<Client>(connection, static_cast<ControlSocket*>(self)->m_answer));
    return TRUE;
}

} // namespace tessaro
