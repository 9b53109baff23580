// The three failures of the value layer. They carry no data; what() is a
// fixed text. (Support-library failures are the zo::kel::exception family.)
#pragma once

#include <exception>

#include "qkdynam_platform.h"

class QKDYNAM_API TypeErrorException : public std::exception {
public:
    const char* what() const noexcept override;
};

class QKDYNAM_API KeyErrorException : public std::exception {
public:
    const char* what() const noexcept override;
};

class QKDYNAM_API DeserializationErrorException : public std::exception {
public:
    const char* what() const noexcept override;
};
