// What one request costs beside process start and the post: parse + translate + build against starting the
// program and against one post on loopback, in one run.

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>

#include "process/Commands.h"
#include "process/HttpForm.h"
#include "process/HttpPoster.h"
#include "process/Translation.h"
#include "soap/CVsoapParser.h"
#include "soap/Envelopes.h"
#include "syslib/CVLogInterface.h"
#include "tests/support/LoopbackServer.h"

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
