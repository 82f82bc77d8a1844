#pragma once
// halvo-hsf graph: plays a data file through the program's pipeline with the graph page's taker
// on it, and prints for every trace the page would take its time curve, its spectrum (or the
// correlation of two channels), their x ranges and the statistics the page's captions show.

namespace CLI {
class App;
}

namespace halvo::hsf {

void AddGraphCommand(CLI::App& app, int& exitCode);

}  // namespace halvo::hsf
