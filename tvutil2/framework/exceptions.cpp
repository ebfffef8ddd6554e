#include "tvutil2/framework/exceptions.h"

const char* CException::what() const noexcept {
    return "framework exception";
}

const char* CInvalidArgException::what() const noexcept {
    return "invalid argument";
}

const char* CResourceException::what() const noexcept {
    return "the system refused a resource";
}

const char* CUserException::what() const noexcept {
    return "the person has given what can't be taken";
}

void tvutil2::throw_invalid_argument() {
    throw CInvalidArgException();
}
