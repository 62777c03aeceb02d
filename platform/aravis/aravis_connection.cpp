#include "platform/aravis/aravis_connection.h"

#include "platform/aravis/aravis_features.h"
#include "platform/aravis/aravis_session.h"
#include "platform/aravis/gvcp_probe.h"

namespace tessaro {

namespace {

using std::chrono::steady_clock;

constexpr const char* noAnswer = "The camera does not answer";
// A camera that cannot be asked otherwise.
constexpr std::chrono::milliseconds longestCall(1'500);
// One that answers, while a call does not come back.
constexpr std::chrono::milliseconds longestCallOfPresentCamera(2'000);

} // namespace

AravisConnection::AravisConnection(std::optional<std::uint32_t> address)
    : AravisConnection(std::make_shared<AravisSession>(), address) {}

AravisConnection::AravisConnection(std::shared_ptr<AravisSession> session,
                                   std::optional<std::uint32_t> address)
    : m_address(address), m_session(session.get()), m_lost(session->LossFlag()),
      m_thread(std::move(session)) {}

AravisConnection::~AravisConnection() = default;

void AravisConnection::Open(const std::string& name, steady_clock::time_point limit) {
    Run([session = m_session, name] { session->Open(name); }, limit);
    m_open = true;
}

void AravisConnection::ThrowIfLost() const {
    if (IsLost())
        throw CameraLostError(noAnswer);
}

void AravisConnection::CheckPresence() {
    ThrowIfLost();
    if (m_address) {
        if (IsPresent(AskCamera(*m_address)))
            return;
        *m_lost = true;
        ThrowIfLost();
    }
    Ask([](AravisSession& session) { GetIntegerFeature(session.Device(), "Width"); });
}

void AravisConnection::StopSending() {
    m_limit = LimitOfCall();
    const auto stop = [session = m_session] {
        try {
            session->Stream().Stop();
        } catch (const CameraLostError&) {
            *session->LossFlag() = true;
        } catch (const CameraError&) { // the next start will stop it first
        }
    };
    if (!m_thread.Post(stop, [this] { return IsWorthWaiting(); }))
        *m_lost = true;
}

steady_clock::time_point AravisConnection::LimitOfCall() const {
    return steady_clock::now() + (m_address ? longestCallOfPresentCamera : longestCall);
}

void AravisConnection::Run(std::function<void()> work, steady_clock::time_point limit) {
    m_limit = limit;
    try {
        ThrowIfLost();
        if (!m_thread.Run(std::move(work), [this] { return IsWorthWaiting(); }))
            throw CameraLostError(noAnswer);
    } catch (const CameraLostError&) {
        *m_lost = true;
        throw;
    }
}

bool AravisConnection::IsWorthWaiting() {
    if (IsLost() || steady_clock::now() >= m_limit)
        return false;
    return !m_address || IsPresent(AskCamera(*m_address));
}

bool AravisConnection::IsPresent(CameraAnswer answer) const {
    return answer == CameraAnswer::Controlled || answer == CameraAnswer::Unclear ||
           (answer == CameraAnswer::Free && !m_open);
}

} // namespace tessaro
