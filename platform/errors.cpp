#include "platform/errors.h"

#include "platform/text.h"

namespace ryn {

WideException::WideException(std::wstring message)
    : message_(std::move(message)), narrow_(toLatin1WithEscapes(message_)) {}

WideException::WideException(std::wstring message, const std::wstring& description)
    : message_(std::move(message)), narrow_(toLatin1WithEscapes(description)) {}

FileException::FileException(const std::wstring& message, std::wstring fileName)
    : WideException(message, message + L": " + fileName), fileName_(std::move(fileName)) {}

}  // namespace ryn
