#include "component/ClassTable.h"

#include <algorithm>

namespace tervane {
namespace {

constinit std::span<const ClassRow> classes;

} // namespace

void UseClasses(std::span<const ClassRow> rows) noexcept {
    classes = rows;
}

std::span<const ClassRow> ClassTable() noexcept {
    return classes;
}

const ClassRow* FindClass(REFCLSID clsid) noexcept {
    const auto row = std::ranges::find_if(
        classes, [&](const ClassRow& candidate) { return IsEqualCLSID(*candidate.clsid, clsid); });
    return row == classes.end() ? nullptr : &*row;
}

} // namespace tervane
