#pragma once

#include <optional>
#include <string>

#include "machine/Text.h"

// Values under HKEY_LOCAL_MACHINE. Those that write throw CSetupError; keys are made where they are missing.

bool HasValue(const WideText& key, const WideText& value);
/// What a number holds; 0 when there is none.
DWORD ReadNumber(const WideText& key, const WideText& value);
/// What a text value holds; nothing when there is none.
std::optional<std::string> ReadText(const WideText& key, const WideText& value);
void WriteText(const WideText& key, const WideText& value, const std::string& text);
void WriteNumber(const WideText& key, const WideText& value, DWORD dwNumber);
/// Does nothing when there is none.
void DeleteValue(const WideText& key, const WideText& value);
