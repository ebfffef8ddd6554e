// Runs a program's benchmarks and prints one row a work and peer: work, ours, peer, ratio.
//
// A benchmark's name is "work|who", with "ours" for this library. The ratio is the peer's time over
// ours: above 1, ours is the faster one. A counter "amount" (of memory, say) stands in the time's
// place where a benchmark sets it. Other arguments are Google Benchmark's. With
// BENCH_PROCESSOR_TIME set, times are the thread's processor time: for work of one thread on a
// machine that others use.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "bench/support/profile.h"

namespace {

class TableReporter : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.error_occurred) {
                std::fprintf(stderr, "%s: %s\n", run.benchmark_name().c_str(),
                             run.error_message.c_str());
                m_failed = true;
            } else if (run.run_type == Run::RT_Aggregate ? run.aggregate_name == "median"
                                                         : run.repetitions <= 1) {
                keep(run);
            }
        }
    }

    void Finalize() override {
        for (const auto& work : m_order) print_rows(work, m_results[work]);
    }

    [[nodiscard]] bool failed() const { return m_failed; }

  private:
    struct Result {
        std::string who;
        double value;
        bool is_amount;
    };
    using Results = std::vector<Result>;

    void keep(const Run& run) {
        const auto& name = run.run_name.function_name;
        const auto bar = name.find('|');
        const auto work = name.substr(0, bar);
        if (m_results.count(work) == 0) m_order.push_back(work);
        // Seconds for one iteration, whatever unit the run reports in.
        static const bool counts_own_time = std::getenv("BENCH_PROCESSOR_TIME") != nullptr;
        const auto time = counts_own_time ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
        const auto seconds = time / benchmark::GetTimeUnitMultiplier(run.time_unit);
        const auto amount = run.counters.find("amount");
        const bool is_amount = amount != run.counters.end();
        m_results[work].push_back(
            {name.substr(bar + 1), is_amount ? amount->second.value : seconds, is_amount});
    }

    static std::string readable(double result, bool is_amount) {
        const char* unit = "ns";
        double value = result * 1e9;
        if (is_amount) {
            unit = "";
            value = result;
        } else if (value >= 1e9) {
            value /= 1e9;
            unit = "s";
        } else if (value >= 1e6) {
            value /= 1e6;
            unit = "ms";
        } else if (value >= 1e3) {
            value /= 1e3;
            unit = "us";
        }
        char text[32];
        std::snprintf(text, sizeof text, "%.4g %s", value, unit);
        return text;
    }

    static void print_rows(const std::string& work, const Results& results) {
        double ours = 0;
        for (const auto& result : results) {
            if (result.who == "ours") ours = result.value;
        }
        for (const auto& [who, value, is_amount] : results) {
            if (who == "ours" && results.size() > 1) continue;
            std::printf("%-44s %12s %12s  %-28s %8.2f\n", work.c_str(),
                        readable(ours, is_amount).c_str(), readable(value, is_amount).c_str(),
                        who.c_str(), value / ours);
        }
    }

    std::vector<std::string> m_order;
    std::map<std::string, Results> m_results;
    bool m_failed = false;
};

}  // namespace

int main(int argc, char** argv) {
    bench::profile_folder();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    TableReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return reporter.failed() ? 1 : 0;
}
