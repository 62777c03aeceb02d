#include "platform/qt/decoder_messages.h"

#include <QLoggingCategory>
#include <QString>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <tiffio.h>
#include <utility>

namespace tessaro {

namespace {

thread_local DecoderMessages* listener = nullptr;

// The handlers are the whole process's: they are installed while any thread decodes, and then taken back, so
// that whoever installs one in between is never shut out.
std::mutex installMutex;
int listeners = 0;
std::atomic<QtMessageHandler> previousHandler = nullptr;
std::atomic<QLoggingCategory::CategoryFilter> previousFilter = nullptr;

bool SpeaksOfPictures(std::string_view category) {
    return category == "qt.gui.imageio" || category == "qt.gui.imageio.jpeg";
}

void TakeQtMessage(QtMsgType type, const QMessageLogContext& context, const QString& text) {
    if (listener != nullptr && context.category != nullptr && SpeaksOfPictures(context.category)) {
        const auto severity =
            type == QtCriticalMsg ? DecoderMessages::Severity::Error : DecoderMessages::Severity::Warning;
        listener->Add(severity, context.category, text.toStdString());
    } else if (const QtMessageHandler previous = previousHandler) {
        previous(type, context, text);
    }
}

/// The user's logging rules may silence these categories (QT_LOGGING_RULES); decoding needs them.
void KeepPictureWarnings(QLoggingCategory* category) {
    // While Qt is installing this filter the previous one is not known yet, but has already had its say.
    if (const auto previous = previousFilter.load())
        previous(category);
    if (SpeaksOfPictures(category->categoryName()))
        category->setEnabled(QtWarningMsg, true);
}

void InstallQtHandlers() {
    previousHandler = qInstallMessageHandler(TakeQtMessage);
    previousFilter = nullptr;
    previousFilter = QLoggingCategory::installFilter(KeepPictureWarnings);
}

void RemoveQtHandlers() {
    const QtMessageHandler handler = qInstallMessageHandler(previousHandler);
    if (handler != TakeQtMessage) // somebody else's came on top of ours meanwhile, and stays
        qInstallMessageHandler(handler);
    const auto filter = QLoggingCategory::installFilter(previousFilter);
    if (filter != KeepPictureWarnings)
        QLoggingCategory::installFilter(filter);
}

std::atomic<TIFFErrorHandler> previousTiffWarning = nullptr;
std::atomic<TIFFErrorHandler> previousTiffError = nullptr;

void TakeTiffMessage(DecoderMessages::Severity severity, TIFFErrorHandler previous, const char* module,
                     const char* format, std::va_list arguments) {
    if (listener != nullptr) {
        std::array<char, 300> text{};
        std::vsnprintf(text.data(), text.size(), format, arguments);
        listener->Add(severity, module != nullptr ? module : "", text.data());
    } else if (previous != nullptr) {
        previous(module, format, arguments);
    }
}

void TakeTiffWarning(const char* module, const char* format, std::va_list arguments) {
    TakeTiffMessage(DecoderMessages::Severity::Warning, previousTiffWarning, module, format, arguments);
}

void TakeTiffError(const char* module, const char* format, std::va_list arguments) {
    TakeTiffMessage(DecoderMessages::Severity::Error, previousTiffError, module, format, arguments);
}

/// The TIFF library that Qt's plugin uses prints past Qt; its handlers, once set, stay.
void ListenToTiffLibraryOnce() {
    static std::once_flag once;
    std::call_once(once, [] {
        previousTiffWarning = TIFFSetWarningHandler(TakeTiffWarning);
        previousTiffError = TIFFSetErrorHandler(TakeTiffError);
    });
}

} // namespace

DecoderMessages::DecoderMessages() {
    ListenToTiffLibraryOnce();
    const std::lock_guard lock(installMutex);
    if (listeners++ == 0)
        InstallQtHandlers();
    listener = this;
}

DecoderMessages::~DecoderMessages() {
    const std::lock_guard lock(installMutex);
    listener = nullptr;
    if (--listeners == 0)
        RemoveQtHandlers();
}

void DecoderMessages::Add(Severity severity, std::string_view source, std::string text) {
    m_messages.push_back({severity, std::string(source), std::move(text)});
}

} // namespace tessaro
