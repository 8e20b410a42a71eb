#pragma once

#include <Core/DataStream.h>
#include <Core/Property.h>

namespace Dravik {
namespace Core {

// Text form of a property tree, stable across versions and safe for any bytes in names
// and values (lengths are counted, nothing is escaped):
//
//   DPROP 1\n                       header: magic word and format version
//   <tag> <name> [<payload>]\n       one line per property, children follow their container
//
//   name    <byte length>:<bytes>     e.g. 6:recent, or 0: for an unnamed array element
//   tag     N null (no payload)       B bool, payload 0 or 1
//           I integer, decimal        D real, shortest exact decimal ("%.17g")
//           S string, <byte length>:<bytes>
//           A array / O object, payload = number of children, which follow in order
//
// A list of two recent projects reads:
//
//   DPROP 1
//   A 6:recent 2
//   S 0: 16:/home/a.dscproj
//   S 0: 10:/b.dscproj
//
// Deserialize accepts exactly this grammar and nothing after the last line but blanks; on
// any mismatch (foreign or truncated text, a count larger than the data, nesting deeper than
// 64 levels) it logs an error, leaves `property` as a null property and returns false.
class PropertySerializer
{
public:
    static void Serialize(const Property& property, DataOutput& output);
    static bool Deserialize(Property& property, DataInput& input);
};

} // namespace Core
} // namespace Dravik
