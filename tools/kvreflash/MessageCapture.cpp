#include "MessageCapture.h"

#include "MessageText.h"

#include <utility>

MessageCapture* MessageCapture::current = nullptr;

MessageCapture::MessageCapture() : previous_(std::exchange(current, this)) {}

MessageCapture::~MessageCapture() {
    current = previous_;
}

void MessageCapture::take(const std::wstring& message) {
    if (current != nullptr) {
        current->text_ += messageBytes(message);
    }
}
