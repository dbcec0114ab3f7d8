#pragma once

#include <CoreFoundation/CFBase.h>

#include <string>

/// Appends a property's value in the form that the registry's text has: "text", 12, Yes, <0a0b>, <"text","text">,
/// {"key"=value}, (value,value). Nothing in texts is escaped. Data is shown as texts where each of them ends in a null.
/// @param hexadecimal whether numbers are written as 0xc. Negative ones are written as the 64 bits that they are.
void AppendValue(std::string& line, CFTypeRef value, bool hexadecimal);
