// What one request costs beside process start and the post: parse + translate + build against starting the
// program and against one post on loopback, in one run.

#include <benchmark/benchmark.h>
#include <expat.h>
#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "process/Commands.h"
#include "process/DeliveryJournal.h"
#include "process/HttpPoster.h"
#include "process/Translation.h"
#include "soap/CVsoap.h"
#include "soap/CVsoapParser.h"
#include "soap/Envelopes.h"
#include "soap/Methods.h"
#include "syslib/CVLogInterface.h"
#include "syslib/CVsysEventLogInterface.h"
#include "tests/support/LoopbackServer.h"
#include "util/BoundedText.h"

using namespace quorbel;

namespace {

class NoLog : public CVLogInterface {
protected:
    int WriteEntry(const Entry&, va_list) override { return 0; }
};

std::string StandardMessage(int messageLines) {
    std::string message;
    for (int i = 0; i < messageLines; ++i) message += "Pump 4 is hot &amp; loud\n";
    return "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\"><s:Body>"
           "<SendStdMessage xmlns=\"http://quorbel.example/soap\"><szURL>http://127.0.0.1/cmd</szURL>"
           "<szRecipientName>oncall</szRecipientName><szJobID>100001.1</szJobID><nPriority>2</nPriority>"
           "<bTimeStamp>true</bTimeStamp><ResponseActionData><szResponse>1</szResponse><szAction>ack</"
           "szAction>"
           "<bFinal>true</bFinal></ResponseActionData><szMessage>" +
           message +
           "</szMessage><szSender>ops</szSender><szSubject>Alarm</szSubject></SendStdMessage></s:Body></"
           "s:Envelope>";
}

void ParseTranslateBuild(benchmark::State& state) {
    const std::string body = StandardMessage(static_cast<int>(state.range(0)));
    NoLog log;
    for (auto _ : state) {
        RequestRecord record;
        ParseEnvelope(body.c_str(), record, log);
        const MessagingParameters parameters = TranslateMessaging(record);
        const CommandParameters command = BuildMessageCommand(parameters, parameters.recipients.front());
        benchmark::DoNotOptimize(BuildFormBody(command.lines).length());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * body.size()));
}
BENCHMARK(ParseTranslateBuild)->Arg(1)->Arg(300)->Arg(300000)->Unit(benchmark::kMicrosecond);

void BuildAnswerOfLines(benchmark::State& state) {
    std::string reply = "OK\r\n";
    for (int i = 0; i < state.range(0); ++i) reply += "item & more of it\r\n";
    for (auto _ : state) {
        std::size_t size = 0;
        MakeResponse([&](std::string_view piece) { size += piece.size(); }, "QueryMessage", reply);
        benchmark::DoNotOptimize(size);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * reply.size()));
}
BENCHMARK(BuildAnswerOfLines)->Arg(1)->Arg(20000)->Unit(benchmark::kMicrosecond);

// The worst that a body of 16 MB can ask of the parser, against the XML parser alone on the same body.

constexpr std::size_t kWorstSize = 16 << 20;

std::string Repeat(const std::string& text, std::size_t size) {
    std::string all;
    all.reserve(size + text.size());
    while (all.size() < size) all += text;
    return all;
}

/// Every field of a method open at once, inside each other; what follows belongs to all of them.
std::string OpenFields(std::string_view methodName) {
    std::string open = "<" + std::string(methodName) + ">";
    for (const Method& method : Methods()) {
        if (method.name != methodName) continue;
        for (const Field& field : method.fields) open += "<" + std::string(field.element) + ">";
    }
    return open;
}

struct Shape {
    const char* name;
    std::string (*body)();
};
const Shape kShapes[] = {
    {"line feeds in 29 open fields", [] { return OpenFields("AddUserGroup") + Repeat("\n", kWorstSize); }},
    {"one text in 29 open fields", [] { return OpenFields("AddUserGroup") + Repeat("x", kWorstSize); }},
    {"line feeds in a message", [] { return "<SendStdMessage><szMessage>" + Repeat("\n", kWorstSize); }},
    {"one message", [] { return "<SendStdMessage><szMessage>" + Repeat("x", kWorstSize); }},
    {"empty fields in 29 open ones",
     [] { return OpenFields("AddUserGroup") + Repeat("<bLog>\n</bLog>", kWorstSize); }},
    {"response actions", [] { return "<SendStdMessage>" + Repeat("<ResponseActionData/>", kWorstSize); }},
    {"unknown elements in a method", [] { return "<AddUserGroup>" + Repeat("<e/>", kWorstSize); }},
    {"2.3 million nested elements",
     [] { return "<SendStdMessage>" + Repeat("<a>", 2300000 * 3) + Repeat("</a>", 2300000 * 4); }},
    {"nested elements", [] { return "<SendStdMessage>" + Repeat("<a>", kWorstSize); }},
};

double ProcessorSeconds() {
    timespec now;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

void ParseAlone(const std::string& body) {
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const XML_Char*, const XML_Char**) {}, [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const XML_Char*, int) {});
    XML_Parse(parser, body.data(), static_cast<int>(body.size()), XML_FALSE);
    XML_ParserFree(parser);
}

void ParseAsRequest(const std::string& body) {
    NoLog log;
    RequestRecord record;
    ParseEnvelope(body.c_str(), record, log);
}

template <typename Work>
double SecondsOf(Work work) {
    const double start = ProcessorSeconds();
    work();
    return ProcessorSeconds() - start;
}

/// The peak memory, in bytes, of a process that holds this one's memory and parses the body.
double PeakOf(const std::string& body) {
    const pid_t child = fork();
    if (child == 0) {
        ParseAsRequest(body);
        _exit(0);
    }
    rusage usage{};
    wait4(child, nullptr, 0, &usage);
    return 1024.0 * static_cast<double>(usage.ru_maxrss);
}

void WorstShape(benchmark::State& state) {
    mallopt(M_MMAP_THRESHOLD, 1 << 20);  // what is freed goes back, so that the peak is one parse's
    const Shape& shape = kShapes[state.range(0)];
    const std::string body = shape.body();
    double alone = 0;
    double asRequest = 0;
    for (auto _ : state) {
        alone += SecondsOf([&] { ParseAlone(body); });
        asRequest += SecondsOf([&] { ParseAsRequest(body); });
    }
    const auto size = static_cast<double>(body.size());
    state.counters["to_parser"] = asRequest / alone;
    state.counters["peak_to_body"] = PeakOf(body) / size;
    state.counters["body_mb"] = size / (1 << 20);
    state.SetLabel(shape.name);
}
BENCHMARK(WorstShape)->DenseRange(0, std::ssize(kShapes) - 1)->Unit(benchmark::kMillisecond);

/// A directory with logs in it, removed at the end.
class LogDirectory {
public:
    LogDirectory() {
        char name[] = "/tmp/quorbel-bench-XXXXXX";
        if (mkdtemp(name) == nullptr) std::abort();
        path_ = name;
        std::ofstream(path_ + "/cvlogs.ini")
            << "[main]\nlevel=info\nbytesPerFiles=10000000\n[SOAP]\n[Deliveries]\n";
        CVsysEventLogInterface::SetDefaultLogDirectory(path_);
    }
    ~LogDirectory() { std::filesystem::remove_all(path_); }
    LogDirectory(const LogDirectory&) = delete;
    LogDirectory& operator=(const LogDirectory&) = delete;
    const std::string& Path() const { return path_; }

private:
    std::string path_;
};

/// What the delivery journal adds to a request, to be held against LogEntry and PostOnLoopback.
void JournalEntry(benchmark::State& state) {
    const LogDirectory directory;
    const auto log = OpenDeliveryLog(directory.Path());
    RequestRecord record;
    record.Set(Slot::Url, "http://pager1.example:8080/cgi/cmd");
    record.Set(Slot::Recipient, "night");
    CopyText(g_szCommand, "SendStdMessage");
    const PostReport post{.primary = {.httpStatus = 200, .received = 34, .isAnythingSent = true},
                          .secondary = std::nullopt};
    for (auto _ : state) {
        DeliveryJournal journal(log.get(), record);
        journal.Sending();
        journal.Posted(post, "OK job 100001.1 queued for night");
    }
}
BENCHMARK(JournalEntry)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// One entry of the same length in the front end's own log.
void LogEntry(benchmark::State& state) {
    const LogDirectory directory;
    const auto log = CVsysEventLogInterface::Create("SOAP", LogThreading::Single, directory.Path());
    const std::string text(200, 'x');
    for (auto _ : state) log->Info(nullptr, "%s\n", text.c_str());
}
BENCHMARK(LogEntry)->Unit(benchmark::kMicrosecond)->UseRealTime();

/// The program started and ended: without REQUEST_METHOD it stops behind its set-up (here: a site that is not
/// there).
void StartProcess(benchmark::State& state) {
    char program[] = QUORBEL_SOAP;
    char* arguments[] = {program, nullptr};
    char* environment[] = {nullptr};
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", 1 /* O_WRONLY */, 0);
    for (auto _ : state) {
        pid_t pid = 0;
        if (posix_spawn(&pid, program, &actions, nullptr, arguments, environment) != 0) std::abort();
        waitpid(pid, nullptr, 0);
    }
    posix_spawn_file_actions_destroy(&actions);
}
BENCHMARK(StartProcess)->Unit(benchmark::kMicrosecond)->UseRealTime();

void PostOnLoopback(benchmark::State& state) {
    LoopbackServer server;
    std::vector<char> output(4096);
    for (auto _ : state) {
        CommandParameters command;
        command.AddParameter("cmd", "Cli");
        command.AddParameter("name", "oncall");
        command.AddParameter("message", "Pump 4");
        PostCommand(output.data(), output.size(), command, server.Url(), "", "");
    }
}
BENCHMARK(PostOnLoopback)->Unit(benchmark::kMicrosecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
