// The export macro: what carries it is visible outside the shared library.
#pragma once

#define ZEBX_API __attribute__((visibility("default")))
