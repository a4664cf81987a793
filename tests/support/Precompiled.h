#pragma once

// What nearly every test includes, in the order that the system's headers need.

#include <winsock2.h>

#include <windows.h>

#include <oleauto.h>

#include "GoogleTestNotification.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>
