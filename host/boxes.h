// Number boxes. They keep what was stored: an integer its 64 bits whatever its class, a Float its double.
#pragma once

#include "host/objects.h"

namespace host {

// Whether the pointer is a live number box; null and foreign pointers may be asked.
bool isBox(void* item);

// The payload of a box, converted; 0 for any other object.
long long boxAsInteger(ObjectInstance& object);
double boxAsDouble(ObjectInstance& object);

// Stores, converted to what the box's class holds; nothing happens to any other object.
void setBoxInteger(ObjectInstance& object, long long value);
void setBoxDouble(ObjectInstance& object, double value);

}  // namespace host
