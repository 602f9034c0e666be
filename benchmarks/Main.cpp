#include <benchmark/benchmark.h>

#include <future>
#include <thread>

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 1;
    }
    // An application has more than one thread. With a single one glibc leaves out the atomic
    // operations of its heap and its mutexes, and every figure would flatter.
    std::promise<void> finished;
    std::thread parked([&finished] { finished.get_future().wait(); });
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    finished.set_value();
    parked.join();
}
