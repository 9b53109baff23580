#include "tavlo/qkstatic/VarDataExceptions.h"

const char* TypeErrorException::what() const noexcept { return "VarData type error"; }
const char* KeyErrorException::what() const noexcept { return "VarData key error"; }
const char* DeserializationErrorException::what() const noexcept { return "VarData deserialization error"; }
