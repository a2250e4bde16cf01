// Every Windows test program decodes pictures with GDI+ started once for the whole run, as the programs do.

#include "core/win32/gdiplus_session.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class GdiplusEnvironment : public ::testing::Environment {
public:
    void SetUp() override { session_ = std::make_unique<nv::GdiplusSession>(); }
    void TearDown() override { session_.reset(); }

private:
    std::unique_ptr<nv::GdiplusSession> session_;
};

const auto* const registered = ::testing::AddGlobalTestEnvironment(new GdiplusEnvironment);

} // namespace
