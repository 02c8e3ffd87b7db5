#include <map>

#include "common/files/busca_ficheros.h"
#include "common/files/file_system.h"
#include "common/sys/sync.h"
#include "platform/coredll/coredll.h"
#include "tests/files/files_fixture.h"

namespace zelto::test {
namespace {

TEST(FileNames, AreCutJoinedAndNormalised) {
    struct {
        const char *path, *directory, *name, *with_extension, *normal;
    } const cases[] = {
        {"\\a\\b.txt", "\\a", "b.txt", "\\a\\b.BAK", "\\a\\b.txt"},
        {"dir/sub\\name.txt", "dir/sub", "name.txt", "dir/sub\\name.BAK", "dir\\sub\\name.txt"},
        {"dir/name", "", "name", "dir/name.BAK", "dir\\name"},
        {"a.d\\name", "a.d", "name", "a.d\\name.BAK", "a.d\\name"},
        {"a.d/name", "", "name", "a.BAK", "a.d\\name"},  // only a "\" ends the search for the "."
        {"\\top", "", "top", "\\top.BAK", "\\top"},
        {"", "", "", ".BAK", ""},
        {"\\a\\.\\b\\\\c\\..\\d\\", "\\a\\.\\b\\\\c\\..\\d", "", "\\a\\.\\b\\\\c\\..\\d\\.BAK",
         "\\a\\b\\d"},
        {"\\..\\..\\x", "\\..\\..", "x", "\\..\\..\\x.BAK", "\\x"},
        {"a\\..\\..\\b", "a\\..\\..", "b", "a\\..\\..\\b.BAK", "b"},
    };
    for (const auto& c : cases) {
        EXPECT_STREQ(DirectoryPart(c.path).c_str(), c.directory) << c.path;
        EXPECT_STREQ(FileNamePart(c.path).c_str(), c.name) << c.path;
        EXPECT_STREQ(NormalizePath(c.path).c_str(), c.normal) << c.path;
        DString path(c.path);
        SetExtension(path, "BAK");
        EXPECT_STREQ(path.c_str(), c.with_extension) << c.path;
    }
    DString path("a.txt");
    SetExtension(path, ".b");
    EXPECT_STREQ(path.c_str(), "a.b");
    SetExtension(path, "");
    EXPECT_STREQ(path.c_str(), "a");
    EXPECT_STREQ(JoinPath("a", "b").c_str(), "a\\b");
    EXPECT_STREQ(JoinPath("a/", "b").c_str(), "a/b");
    EXPECT_STREQ(JoinPath("", "b").c_str(), "b");
}

class FileSystemTest : public FilesTest {};

TEST_F(FileSystemTest, TestsWhatIsThere) {
    Put("file", "");
    EXPECT_TRUE(FileExists(Name("file")) && FileExists(Name("")));
    EXPECT_FALSE(FileExists(Name("missing")) || FileExists(""));
    EXPECT_TRUE(DirectoryExists(Name(""), false) && DirectoryExists(Name("missing"), true));
    EXPECT_FALSE(DirectoryExists(Name("file"), false) || DirectoryExists(Name("no\\file"), true));
    EXPECT_FALSE(IsReadOnly(Name("file")) || IsHidden(Name("file")));
    EXPECT_TRUE(IsReadOnly(Name("missing")) && IsHidden(Name("missing")));
    Put(".hidden", "");
    EXPECT_TRUE(IsHidden(Name(".hidden")));
    std::filesystem::permissions(Host("file"), std::filesystem::perms::owner_read);
    EXPECT_TRUE(IsReadOnly(Name("file")));
}

TEST_F(FileSystemTest, CopiesMovesAndDeletes) {
    Lock lock;
    FileSystemLock() = &lock;
    Put("a", "A");
    Put("b", "B");
    EXPECT_FALSE(CopyFileTo(Name("a"), Name("b"), true));
    EXPECT_FALSE(MoveFileTo(Name("a"), Name("b")));
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    EXPECT_EQ(Get("b"), "B");
    EXPECT_TRUE(CopyFileTo(Name("a"), Name("b"), false));
    EXPECT_EQ(Get("b"), "A");
    EXPECT_TRUE(RemoveFile(Name("b")));
    EXPECT_FALSE(RemoveFile(Name("b")) || CopyFileTo(Name("b"), Name("c"), false));
    EXPECT_TRUE(MoveFileTo(Name("a"), Name("b")));
    EXPECT_EQ(Get("b"), "A");
    EXPECT_FALSE(IsThere("a"));
    FileSystemLock() = nullptr;
}

TEST_F(FileSystemTest, MakesChainsOfFolders) {
    struct {
        const char* path;
        bool of_file, made;
        const char* folder;  // that is then there
    } const cases[] = {
        {"a\\b\\c", false, true, "a/b/c"},  {"a\\b\\c", false, true, "a/b/c"},
        {"d\\e\\f.txt", true, true, "d/e"}, {"g/h\\", false, true, "g/h"},
        {"i\\..\\j", false, true, "j"},     {"file\\x", false, false, ""},  // not a folder
        {"bad?\\x", false, false, ""},      {"f.txt", true, true, ""},
    };
    Put("file", "");
    for (const auto& c : cases) {
        EXPECT_EQ(MakeDirectory(Name(c.path), c.of_file), c.made) << c.path;
        EXPECT_TRUE(std::filesystem::is_directory(Host(c.folder))) << c.path;
    }
    EXPECT_FALSE(IsThere("d/e/f.txt"));
    EXPECT_TRUE(MakeDirectory("\\", false) && MakeDirectory("\\x", true));
    EXPECT_TRUE(MakeDirectory("..", false));  // the root again
    EXPECT_FALSE(MakeDirectory("", false));
    const std::string deep(100'000, '\\');
    EXPECT_FALSE(MakeDirectory((deep + "x").c_str(), false));
}

TEST_F(FileSystemTest, PutsNamesNextToTheProgram) {
    DString name("\\elsewhere/some.dat");
    EXPECT_TRUE(ModuleDirectoryPath(name));
    const std::string folder = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::string expected = folder + "/some.dat";
    std::replace(expected.begin(), expected.end(), '/', '\\');
    EXPECT_EQ(name.c_str(), expected);
}

TEST_F(FileSystemTest, NamesFilesInTheCurrentCodepage) {
    SetCurrentCodepage(65001);
    Put("\xC3\xB1", "A");
    EXPECT_TRUE(CopyFileTo(Name("\xC3\xB1"), Name("\xE2\x82\xAC"), true));
    EXPECT_EQ(Get("\xE2\x82\xAC"), "A");
    TBuscaFicheros search(Name("\xE2*"));
    ASSERT_TRUE(!search.Next());  // half a character is none
    TBuscaFicheros whole(Name("\xE2\x82\xAC*"));
    ASSERT_TRUE(whole.Next());
    EXPECT_STREQ(whole.Path().c_str(), Name("\xE2\x82\xAC").c_str());
}

TEST_F(FileSystemTest, EnumeratesOneFolder) {
    Put("a.txt", "12345");
    Put("b.txt", "");
    Put(".c.txt", "1");
    Put("other", "");
    std::filesystem::create_directory(Host("d.txt"));
    Put("d.txt/e.txt", "");
    for (const bool hidden : {false, true}) {
        TBuscaFicheros search(Name("*.txt"));
        search.SetIncludeHidden(hidden);
        search.SetWithDetails(true);
        std::map<std::string, std::pair<bool, uint32_t>> found;
        while (search.Next()) {
            found[search.Path().c_str()] = {search.IsDirectory(), search.Size()};
            EXPECT_EQ(search.Details().size, search.Size());
            EXPECT_EQ((search.Details().attributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                      search.IsDirectory());
            EXPECT_NE(search.Details().written.dwHighDateTime, 0U);
        }
        std::map<std::string, std::pair<bool, uint32_t>> expected = {
            {Name("a.txt").c_str(), {false, 5}},
            {Name("b.txt").c_str(), {false, 0}},
            {Name("d.txt").c_str(), {true, 0}}};
        if (hidden)
            expected[Name(".c.txt").c_str()] = {false, 1};
        EXPECT_EQ(found, expected);
        EXPECT_TRUE(search.Next());  // anew
    }
    EXPECT_FALSE(TBuscaFicheros(Name("*.none")).Next());
    EXPECT_FALSE(TBuscaFicheros(Name("none\\*")).Next());
}

}  // namespace
}  // namespace zelto::test
