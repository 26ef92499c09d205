// Readable forms of the values the daemon reports.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orx::orxmaint {

// Milliseconds since the Unix epoch as local ISO time, e.g. "2024-05-01T14:03:07"; "-" for 0.
std::string LocalTime(uint64_t epochMs);
// Microseconds with a unit that keeps them short: "850 us", "1.25 ms", "2.50 s".
std::string Latency(uint64_t micros);
// "0x1a2b".
std::string HexId(uint16_t id);
std::string YesNo(bool value);
// "pub" for the offering side, "sub" for the using side.
std::string Side(bool isPub);
// Binding names joined by commas: "DDS,SOMEIP"; "-" when there are none.
std::string Bindings(const std::vector<std::string>& names);
// "-" for empty text, the text otherwise.
std::string OrDash(const std::string& text);

}  // namespace orx::orxmaint
