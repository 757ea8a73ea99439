// SPDX-License-Identifier: Apache-2.0
//
// The code of the guide to C++.

#include <chrono>
#include <cmath>
#include <complex>
#include <cstdint>
#include <future>
#include <hcy/hcyclient.hpp>
#include <hcy/hcyclient_eigen.hpp>
#include <iostream>
#include <map>
#include <string>
#include <utility>
#include <vector>

using hcyclient::Array;

static void callFunctions(hcyclient::Context& context, const std::string& server) {
  std::cout << "calls\n";
  Array sum = context.call(server + "/math/plus", 2.0, 3.0);
  std::cout << sum.scalar() << '\n';

  const Array A = Array::fromRows<double>({{2, 1}, {1, 3}});
  auto [u, s, v] = context.feval<3>(server + "/linalg/svd", A);
  std::cout << s.size() << '\n';

  auto solve = context.function(server + "/linalg/solve");
  Array x = solve(A, std::vector<double>{4, 7});
  std::cout << x.at<double>(0) << ", " << x.at<double>(1) << '\n';

  const int count = 2;  // known at run time
  hcyclient::Outputs outputs = context.feval(server + "/echo", {A, "text", {1.0, 2.0}}, count);
  std::cout << outputs[1].toString() << '\n';
}

static void makeArrays() {
  std::cout << "in\n";
  const std::vector<double> values = {1, 2, 3, 4, 5, 6};
  const int rows = 2, columns = 3;

  Array column = values;                       // 6-by-1
  Array row = Array::row(values);              // 1-by-6
  Array matrix(values, rows, columns);         // column by column
  Array same(values.data(), {rows, columns});  // from a pointer, with a shape
  Array byRows = Array::fromRows<double>({{1, 3, 5}, {2, 4, 6}});
  Array cube = Array::zeros<float>(rows, columns, 4);
  Array text = "Z\u00fcrich";  // UTF-8
  std::cout << (matrix == same) << (matrix == byRows) << '\n';

  hcyclient::Span<float> elements = cube.span<float>();  // no copy
  elements[cube.index(1, 2, 3)] = 0.5F;
  std::cout << cube.at<float>(1, 2, 3) << ' ' << text.size() << '\n';
}

static void readArrays(const Array& counts) {
  std::cout << "out\n";
  std::vector<double> numbers = counts.toVector<double>();  // from int32: every value is exact
  int first = counts.at<int>(0, 0);
  for (std::int32_t count : counts.span<std::int32_t>()) std::cout << count << ' ';
  std::cout << numbers.size() << ' ' << first << '\n';

  try {
    Array half = 0.5;
    half.scalar<int>();
  } catch (const hcyclient::UsageError& error) {
    std::cout << error.what() << '\n';
  }
}

static void nest() {
  std::cout << "nested\n";
  Array options = Array::structOf({{"name", "fast"}, {"limits", Array::cellOf({1.0, 10.0})}});
  options("name") = "careful";
  options("limits")[1] = 20.0;

  double tolerance = options.value_or("tolerance", 1e-6);  // there is no such field
  std::string name = options.value_or("name", "none");
  std::vector<double> weights = options.value_or("weights", std::vector<double>{1, 1});
  std::cout << name << ' ' << tolerance << ' ' << options("limits")[1].scalar() << ' '
            << weights.size() << '\n';

  for (auto [field, value] : options.fields()) {
    std::cout << field << ": " << value.className() << '\n';
  }
  Array limits = options("limits");
  for (Array limit : limits) std::cout << limit.scalar() << ' ';
  std::cout << '\n';

  std::map<std::string, double> settings = {{"alpha", 0.5}, {"beta", 2.0}};
  std::vector<Array> list;
  list.push_back(Array::structOf(settings));
  list.push_back("text");
  std::cout << Array::cellOf(list) << '\n';
}

static void print() {
  std::cout << "printing\n";
  Array matrix = Array::fromRows<double>({{1, -0.5}, {200, 4}});
  std::cout << matrix << '\n';
  Array wide = Array::zeros<double>(1, 1000);
  std::cout << hcyclient::format(wide, {30, 10, 10}) << '\n';
}

static void useEigen(hcyclient::Context& context, const std::string& server) {
  std::cout << "Eigen\n";
  Eigen::MatrixXd A(2, 2);
  A << 2, 1, 1, 3;
  Eigen::Vector2d b(4, 7);

  using hcyclient::toArray;
  Array x = context.call(server + "/linalg/solve", toArray(A), toArray(b));
  auto view = hcyclient::asEigen<double>(x);                      // no copy: x must outlive it
  Eigen::VectorXd copy = hcyclient::toEigen<Eigen::VectorXd>(x);  // also converts other classes
  std::cout << view.rows() << ' ' << copy.size() << '\n';
}

static void tellFailures(hcyclient::Context& context, const std::string& url) {
  try {
    context.call(url, 1.0);
  } catch (const hcyclient::FunctionError& error) {
    std::cout << "the function: " << error.identifier() << '\n';
  } catch (const hcyclient::HttpError& error) {
    std::cout << "the server: " << error.status() << '\n';
  } catch (const hcyclient::TransportError& error) {
    const bool slow = error.reason() == hcyclient::Reason::timeout;
    std::cout << (slow ? "too slow" : "no reply") << ": " << error.reason() << '\n';
    std::cerr << error.describe() << '\n';  // with the URL, without its password
  }
}

static void fail(hcyclient::Context& context, const std::string& server) {
  std::cout << "failures\n";
  tellFailures(context, server + "/demo/fail");
  tellFailures(context, server + "/nothing");

  const hcyclient::Retry retry{3, std::chrono::milliseconds(200)};
  Array sum = retry.run([&] { return context.call(server + "/math/plus", 1.0, 1.0); });
  std::cout << sum.scalar() << '\n';
}

static void callOnThreads(const hcyclient::Config& config, const std::string& server) {
  std::cout << "threads\n";
  hcyclient::Pool pool(config, 4);
  std::future<Array> sum = pool.call(server + "/math/plus", 2.0, 3.0);
  std::vector<Array> echoed = pool.map(server + "/echo", std::vector<double>{1, 2, 3});
  std::cout << sum.get().scalar() << ' ' << echoed[2].scalar() << '\n';
}

int main(int argc, char** argv) try {
  if (argc != 2) throw hcyclient::UsageError("usage: cpp SERVER_URL");
  const std::string server = argv[1];
  const hcyclient::Library library;  // keep it as long as the program makes calls
  hcyclient::Config config(library);
  config.setTimeout(std::chrono::seconds(30)).setResponseSizeLimit(1u << 28);
  hcyclient::Context context(config);  // one connection; use it on one thread at a time
  callFunctions(context, server);
  makeArrays();
  readArrays(std::vector<int>{5, 6, 7});
  nest();
  print();
  useEigen(context, server);
  fail(context, server);
  callOnThreads(config, server);
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
