#include "tvutil2/framework/exceptions.h"

const char* CException::what() const noexcept {
    return "framework exception";
}

const char* CInvalidArgException::what() const noexcept {
    return "invalid argument";
}

void tvutil2::throw_invalid_argument() {
    throw CInvalidArgException();
}
