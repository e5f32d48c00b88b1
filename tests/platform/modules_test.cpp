#include <gtest/gtest.h>
#include <array>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>

#include "platform/code_page.h"
#include "platform/win32.h"

namespace luadui::platform_test {
namespace {

namespace fs = std::filesystem;

std::wstring HostFolder() {
    std::array<wchar_t, 1024> path{};
    EXPECT_GT(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())), 0u);
    EXPECT_TRUE(PathRemoveFileSpecW(path.data()));
    return path.data();
}

// Independent of the locale.
fs::path ToPath(const std::wstring& path) {
    const std::string utf8 = code_page::WideToUtf8(path);
    return std::u8string(utf8.begin(), utf8.end());
}

fs::path ModuleFile(const char* name) {
#ifdef _WIN32
    return ToPath(HostFolder()) / (std::string(name) + ".dll");
#else
    return ToPath(HostFolder()) / ("lib" + std::string(name) + ".so");
#endif
}

// A folder below the host's with the test module in it, while the object lives.
class ModuleFolder {
  public:
    explicit ModuleFolder(const std::wstring& name) : m_path(ToPath(HostFolder() + L"/" + name)) {
        fs::create_directories(m_path);
        const auto file = ModuleFile("platform_test_module");
        fs::copy_file(file, m_path / file.filename(), fs::copy_options::overwrite_existing);
    }
    ~ModuleFolder() {
        std::error_code error;
        fs::remove_all(m_path, error);
    }

  private:
    const fs::path m_path;
};

using Answer = int (*)();

int AnswerOf(HMODULE module) {
    const auto answer = reinterpret_cast<Answer>(reinterpret_cast<void*>(GetProcAddress(module, "answer")));
    return answer ? answer() : 0;
}

TEST(Modules, AreFoundByTheNamesThatHostsUse) {
    const ModuleFolder plain(L"platform_test_pages"), chinese(L"平台测试页");
    const std::wstring host = HostFolder();
    const struct {
        std::wstring name;
        DWORD error;
    } cases[] = {
        {L"platform_test_module.dll", 0},
        {L"platform_test_module", 0},
        {host + L"\\platform_test_module.dll", 0},
        {host + L"/platform_test_pages/platform_test_module.dll", 0},
        {host + L"\\platform_test_pages\\platform_test_module.dll", 0},
        {L"platform_test_pages\\platform_test_module.dll", 0},
        {host + L"\\平台测试页\\platform_test_module.dll", 0},
        {L"platform_no_such_module.dll", ERROR_MOD_NOT_FOUND},
        {host + L"\\platform_no_such_module.dll", ERROR_MOD_NOT_FOUND},
        {host + L"\\platform_no_such_folder\\platform_test_module.dll", ERROR_MOD_NOT_FOUND},
    };
    for (const auto& [name, error] : cases) {
        SCOPED_TRACE(testing::PrintToString(name));
        SetLastError(0);
        const HMODULE module = LoadLibraryW(name.c_str());
        EXPECT_EQ(module != nullptr, error == 0);
        if (!module) {
            EXPECT_EQ(GetLastError(), error);
            continue;
        }
        EXPECT_EQ(AnswerOf(module), 42);
        EXPECT_EQ(GetProcAddress(module, "no_such_function"), nullptr);
        EXPECT_EQ(GetProcAddress(module, "sleep"), nullptr) << "it is another module's";
        EXPECT_EQ(GetLastError(), DWORD{ERROR_PROC_NOT_FOUND});
        EXPECT_TRUE(FreeLibrary(module));
    }
    // and all of them have left
    EXPECT_EQ(GetModuleHandleW(L"platform_test_module.dll"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MOD_NOT_FOUND});
}

TEST(Modules, ThatAreNoneAreSaidToBeBroken) {
    const fs::path file = ModuleFile("platform_broken_module");
    std::ofstream(file) << "This is text.";
    EXPECT_EQ(LoadLibraryW(L"platform_broken_module.dll"), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_BAD_EXE_FORMAT});
    fs::remove(file);
}

TEST(Modules, CanBePinned) {
    const HMODULE module = LoadLibraryW(L"platform_test_pinned.dll");
    ASSERT_NE(module, nullptr);
    HMODULE found = nullptr;
    const auto address = reinterpret_cast<LPCWSTR>(reinterpret_cast<void*>(GetProcAddress(module, "answer")));
    EXPECT_TRUE(GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                                   address, &found));
    EXPECT_EQ(found, module);
    FreeLibrary(module);
    FreeLibrary(module);
    EXPECT_EQ(GetModuleHandleW(L"platform_test_pinned.dll"), module);
    EXPECT_EQ(AnswerOf(module), 42);
}

TEST(Modules, KnowTheirFiles) {
    std::array<wchar_t, 1024> path{};
    const HMODULE host = GetModuleHandleW(nullptr);
    ASSERT_NE(host, nullptr);
    const DWORD length = GetModuleFileNameW(host, path.data(), 1024);
    EXPECT_EQ(std::wstring(path.data()).size(), length);
    EXPECT_TRUE(PathFileExistsW(path.data()));
    EXPECT_EQ(GetModuleFileNameW(host, path.data(), 5), 5u);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_INSUFFICIENT_BUFFER});
    EXPECT_FALSE(PathFileExistsW(L"platform_no_such_file"));
}

TEST(Paths, LoseTheirLastPart) {
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"C:\\host\\terminal.exe", L"C:\\host"},
        {L"\\host\\pages\\", L"\\host\\pages"},
        {L"terminal.exe", L""},
        {L"\\terminal.exe", L"\\"},
    };
    for (const auto& [path, folder] : cases) {
        std::wstring cut = path;
        EXPECT_TRUE(PathRemoveFileSpecW(cut.data()));
        EXPECT_EQ(std::wstring(cut.c_str()), folder);
    }
    wchar_t empty[] = L"";
    EXPECT_FALSE(PathRemoveFileSpecW(empty));
}

TEST(FileVersions, OfWhatHasNone) {
    DWORD handle = 1;
    EXPECT_EQ(GetFileVersionInfoSizeW(L"platform_no_such_file", &handle), 0u);
    EXPECT_EQ(handle, 0u);
}

TEST(Com, CountsPerThread) {
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    EXPECT_EQ(CoInitialize(nullptr), S_FALSE);
    CoUninitialize();
    CoUninitialize();
    EXPECT_EQ(CoInitialize(nullptr), S_OK);
    CoUninitialize();
}

TEST(Com, GuidsDiffer) {
    std::set<std::string> made;
    for (int i = 0; i < 1000; ++i) {
        GUID guid{};
        ASSERT_EQ(CoCreateGuid(&guid), S_OK);
        EXPECT_EQ(guid.Data3 >> 12, 4);
        EXPECT_EQ(guid.Data4[0] >> 6, 2);
        made.emplace(reinterpret_cast<const char*>(&guid), sizeof(guid));
    }
    EXPECT_EQ(made.size(), 1000u);
}

}  // namespace
}  // namespace luadui::platform_test
