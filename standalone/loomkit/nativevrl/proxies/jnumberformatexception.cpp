#include "proxies/jnumberformatexception.h"

JNumberFormatException::JNumberFormatException() = default;
JNumberFormatException::JNumberFormatException(const JNumberFormatException&) = default;
JNumberFormatException& JNumberFormatException::operator=(const JNumberFormatException&) = default;
JNumberFormatException::~JNumberFormatException() = default;
