#pragma once

#include "tether/exceptions.h"

/// Marks that a text could be read as no number; the java.lang.NumberFormatException of the last parser is pending.
class __attribute__((visibility("default"))) JNumberFormatException : public tether::Exception {
public:
    JNumberFormatException();
    JNumberFormatException(const JNumberFormatException&);
    JNumberFormatException& operator=(const JNumberFormatException&);
    ~JNumberFormatException() override;
};
