// Files by their names: links, one file twice, long names, and what is left behind when something
// goes wrong.

#include "tests/host/host.hpp"

#include <array>
#include <csignal>
#include <unistd.h>

namespace zsp::test {

namespace {

using HostFiles = Host;

TEST_F(HostFiles, OneFileIsNotReadAndWritten)
{
    put("in.wav", wavFile(someSignal(800)));
    put("in.ul", Bytes(800, 0xff));
    fs::create_symlink("in.wav", path("link.wav"));
    fs::create_hard_link(path("in.wav"), path("twin.wav"));
    fs::create_directory(path("folder"));
    fs::create_symlink("../folder", path("folder/here"));
    fs::create_symlink("new.wav", path("dangling.wav"));
    const Bytes before = get("in.wav");
    for (const char* arguments : {
             "alc in.wav in.wav",
             "alc in.wav link.wav",
             "alc link.wav twin.wav",
             "alc in.wav folder/../in.wav",
             "alc in.wav new.wav --report new.wav",
             "alc in.wav folder/new.wav --report folder/here/../folder/new.wav",
             "alc in.wav folder/a.wav --report folder/here/a.wav",
             "alc in.wav dangling.wav --report new.wav",
             "alc in.wav - --report -",
             "alc in.wav new.wav --report in.wav",
             "aec in.wav in.ul in.wav",
             "vad in.wav in.wav",
             "vad in.wav a.csv --report a.csv",
             "encode in.wav in.wav -c g726",
             "decode in.ul in.ul",
             "decode -c pcmu - in.ul <in.ul",
             "alc - - <in.wav 1<>twin.wav",
         }) {
        const Outcome outcome = zsp(arguments);
        EXPECT_EQ(outcome.status, 2) << arguments << "\n" << outcome.text;
        EXPECT_TRUE(outcome.text.find("input and output at once") != std::string::npos ||
                    outcome.text.find("named for two outputs") != std::string::npos)
            << outcome.text;
    }
    EXPECT_EQ(get("in.wav"), before);
    EXPECT_FALSE(fs::exists(path("new.wav")));
    // One file read twice, or nothing written, is no fault.
    EXPECT_EQ(zsp("aec in.wav in.wav new.wav").status, 0);
    EXPECT_EQ(zsp("alc in.wav /dev/null --report /dev/null").status, 0);
}

TEST_F(HostFiles, OutputReplacesWhatALinkNamesAndKeepsItsMode)
{
    put("in.wav", wavFile(someSignal(800)));
    put("target", {1});
    fs::permissions(path("target"), fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("target", path("link"));
    ASSERT_EQ(zsp("encode -c g726 in.wav link").text, "");
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(get("target").size(), 400u);
    EXPECT_EQ(fs::status(path("target")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    // A link to nothing yet.
    fs::create_directory(path("folder"));
    fs::create_symlink("folder/new", path("dangling"));
    ASSERT_EQ(zsp("encode -c g726 in.wav dangling").text, "");
    EXPECT_TRUE(fs::is_symlink(path("dangling")));
    EXPECT_EQ(get("folder/new").size(), 400u);
}

TEST_F(HostFiles, NamesAsLongAsTheyCanBe)
{
    put("in.wav", wavFile(someSignal(800)));
    const std::string longest = std::string(250, 'x') + ".g726";
    ASSERT_EQ(zsp("encode in.wav " + longest).text, "");
    ASSERT_EQ(zsp("encode in.wav " + longest).text, "") << "over the one that is there";
    EXPECT_EQ(get(longest).size(), 400u);
    EXPECT_EQ(zsp("encode in.wav x" + longest).status, 1);
    EXPECT_EQ(files(), std::vector<std::string>({"in.wav", longest}));
}

TEST_F(HostFiles, AnInterruptLeavesNothingBehind)
{
    const Bytes input = wavPromising(someSignal(20000), 0xffff'ffff); // of unknown length
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ, SIGKILL}) {
        std::array<int, 2> pipe{};
        ASSERT_EQ(::pipe(pipe.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            dup2(pipe[0], STDIN_FILENO);
            close(pipe[0]);
            close(pipe[1]);
            execl(ZSP_PROGRAM, "zsp", "encode", "-", path("out.ul").c_str(), nullptr);
            _exit(127);
        }
        ASSERT_EQ(write(pipe[1], input.data(), input.size()), static_cast<ssize_t>(input.size()));
        // The pipe stays open: the encoder waits for more, its file half written.
        usleep(100'000);
        EXPECT_EQ(kill(child, signal), 0);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal);
        EXPECT_EQ(files(), std::vector<std::string>{});
        close(pipe[0]);
        close(pipe[1]);
    }
    // A limit on the size of files ends the process in the middle of writing.
    put("in.wav", wavFile(someSignal(800'000)));
    EXPECT_NE(run("ulimit -f 100; ulimit -c 0; zsp encode in.wav out.ul").status, 0);
    EXPECT_EQ(files(), std::vector<std::string>{"in.wav"});
}

TEST_F(HostFiles, FailuresAreToldAndLeaveNothingBehind)
{
    const Words signal = someSignal(20000);
    put("good.wav", wavFile(signal));
    put("good.ul", Bytes(9000, 0x5a));
    put("empty", {});
    put("short.wav", wavPromising(signal, 50000));
    put("odd.wav", wavPromising(signal, 39999));
    put("none.wav", wavFile({}));
    put("odd.raw", Bytes(4001, 1));
    put("noise", Bytes(3000, 0x5a));
    Bytes head = wavFile(signal);
    head.resize(30);
    put("head.wav", head);
    Bytes garbled = wavFile(signal);
    std::fill(garbled.begin() + 12, garbled.begin() + 40, std::uint8_t{0xff});
    put("garbled.wav", garbled);
    put("kept.ul", {1, 2, 3});
    fs::create_directory(path("directory"));
    const std::vector<std::string> before = files();

    struct Row {
        const char* arguments;
        const char* message;
    };
    const Row rows[] = {
        {"encode missing.wav out.ul", "missing.wav: No such file or directory"},
        {"encode directory out.ul", "directory: Is a directory"},
        {"encode empty out.ul", "empty: is empty"},
        {"encode none.wav out.ul", "none.wav: holds no samples"},
        {"encode short.wav out.ul", "the header promises 50000 bytes"},
        {"encode short.wav kept.ul", "short.wav: truncated"},
        {"encode - out.ul <short.wav", "truncated"},
        {"encode - kept.ul <short.wav", "truncated"},
        {"encode <(cat short.wav) kept.ul", "truncated"},
        {"encode odd.wav out.ul", "not a whole number of frames"},
        {"encode odd.raw out.ul", "odd.raw: 1 byte left over"},
        {"encode -f raw - out.ul <odd.raw", "1 byte left over"},
        {"encode -f raw <(cat odd.raw) out.ul", "1 byte left over"},
        {"encode head.wav out.ul", "head.wav: "},
        {"encode garbled.wav out.ul", "garbled.wav: "},
        {"encode noise out.ul", "noise: "},
        {"encode -f au good.wav out.ul", "good.wav: is WAV, not au"},
        {"encode -f flac good.wav out.ul", "good.wav: is WAV, not flac"},
        {"encode good.wav nowhere/out.ul", "nowhere/out.ul: No such file or directory"},
        {"encode -c pcmu good.wav directory", "directory: Is a directory"},
        {"encode -c pcmu good.wav /dev/full", "/dev/full: No space left on device"},
        {"encode -c pcmu good.wav - >/dev/full", "No space left on device"},
        {"decode good.ul -f au /dev/full", "/dev/full: No space left on device"},
        {"decode good.ul -f flac /dev/full", "/dev/full: No space left on device"},
        {"decode -c pcmu empty out.wav", "empty: is empty"},
        {"decode -c pcmu - out.wav </dev/null", "is empty"},
        {"decode -u -c g726 noise out.wav", "byte 0 is 0x5a, no code word of 4 bits"},
        {"decode good.ul nowhere/out.wav", "nowhere/out.wav: No such file"},
        {"vad short.wav out.csv", "truncated"},
        {"vad good.wav nowhere/out >/dev/null", "nowhere/out: No such file"},
        {"alc empty out.wav", "empty: is empty"},
        {"aec good.wav missing.wav out.wav", "missing.wav: No such file"},
        {"demo missing.wav -o out", "missing.wav: No such file"},
        {"demo -o kept.ul", "kept.ul: "},
        {"info >/dev/full", "No space left on device"},
        {"codecs >/dev/full", "No space left on device"},
        {"--help >/dev/full", "No space left on device"},
        {"alc --help >/dev/full", "No space left on device"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments);
        const Outcome outcome = shell("cd " + directory_.string() +
                                      "; exec bash -c '" ZSP_PROGRAM " " + row.arguments + "'");
        EXPECT_EQ(outcome.status, 1) << outcome.text;
        EXPECT_NE(outcome.text.find(row.message), std::string::npos) << outcome.text;
        EXPECT_TRUE(outcome.text.starts_with("zsp: ")) << outcome.text;
        EXPECT_EQ(files(), before);
        EXPECT_EQ(get("kept.ul"), Bytes({1, 2, 3}));
    }
}

} // namespace

} // namespace zsp::test
