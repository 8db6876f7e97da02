// Password to key against hashing 1 MiB in one go, which is what the derivation cannot do without
// (RFC 3414 appendix A.2), and against net-snmp's where its library is installed.
#include <benchmark/benchmark.h>
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <vector>

#include "transforms/usm-keys.h"

#ifdef HAVE_NETSNMP
#include <net-snmp/net-snmp-config.h>
#include <net-snmp/net-snmp-includes.h>
#endif

namespace quillet {
namespace {

constexpr std::size_t kMebibyte = 1u << 20;
using Clock = std::chrono::steady_clock;
using Key = std::array<unsigned char, 64>;

struct Algorithm {
  const char* name;
  const EVP_MD* (*digest)();
  decltype(&password_to_key_md5) derive;
};
constexpr Algorithm kAlgorithms[] = {{"md5", EVP_md5, password_to_key_md5},
                                     {"sha", EVP_sha1, password_to_key_sha}};

const unsigned char* octets(const std::string& s) {
  return reinterpret_cast<const unsigned char*>(s.data());
}

const std::string& engine_id() {
  static const std::string id("\x80\0\x7e\xd9\x04quillet", 12);
  return id;
}

double seconds_of(const auto& work) {
  const Clock::time_point start = Clock::now();
  work();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

double median(std::vector<double> values) {
  if (values.empty()) return 0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

double seconds_to_derive(const Algorithm& algorithm, const std::string& password, Key& key) {
  return seconds_of([&] {
    algorithm.derive(octets(password), password.size(), octets(engine_id()), engine_id().size(),
                     key.data());
  });
}

void derivation(benchmark::State& state, const Algorithm& algorithm, std::size_t password_size) {
  const std::string password(password_size, 'p');
  const std::string expanded(kMebibyte, 'p');
  Key key{};
  std::vector<double> ratios;
  // The bare digest is measured beside each derivation, so that both have the same machine.
  for ([[maybe_unused]] auto _ : state) {
    const double own = seconds_to_derive(algorithm, password, key);
    benchmark::DoNotOptimize(key);
    state.SetIterationTime(own);
    ratios.push_back(own / seconds_of([&] {
                       EVP_Digest(expanded.data(), expanded.size(), key.data(), nullptr,
                                  algorithm.digest(), nullptr);
                     }));
  }
  state.counters["to_bare_digest"] = median(std::move(ratios));
}

#ifdef HAVE_NETSNMP
void against_netsnmp(benchmark::State& state, const Algorithm& algorithm) {
  const std::string password = "maplesyrup";
  oid* protocol = algorithm.digest == EVP_md5 ? usmHMACMD5AuthProtocol : usmHMACSHA1AuthProtocol;
  Key key{};
  std::vector<double> ratios;
  for ([[maybe_unused]] auto _ : state) {
    const double own = seconds_to_derive(algorithm, password, key);
    state.SetIterationTime(own);
    ratios.push_back(own / seconds_of([&] {
                       std::size_t size = key.size();
                       generate_Ku(protocol, 10, octets(password), password.size(), key.data(),
                                   &size);
                     }));
  }
  state.counters["to_netsnmp"] = median(std::move(ratios));
}
#endif

void register_all() {
  for (const Algorithm& a : kAlgorithms) {
    for (const std::size_t size : {8, 10, 255}) {
      const std::string name = std::string("derive/") + a.name + "/" + std::to_string(size);
      benchmark::RegisterBenchmark(name.c_str(), derivation, a, size)->UseManualTime();
    }
#ifdef HAVE_NETSNMP
    const std::string name = std::string("against_netsnmp/") + a.name;
    benchmark::RegisterBenchmark(name.c_str(), against_netsnmp, a)->UseManualTime();
#endif
  }
}

}  // namespace
}  // namespace quillet

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  quillet::register_all();
  benchmark::RunSpecifiedBenchmarks();
}
