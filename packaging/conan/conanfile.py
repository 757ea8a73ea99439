# SPDX-License-Identifier: Apache-2.0
"""Builds the sources it comes with, with Conan 2:

    conan create packaging/conan --build=missing

In a registry, source() with a URL and a checksum takes the place of export_sources().
"""

import os

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, rmdir

required_conan_version = ">=2.0"


class HcyclientConan(ConanFile):
    name = "hcyclient"
    version = "1.1.0"
    description = "Client library for functions deployed on a Halcyon compute server"
    homepage = "https://hcyclient.example/"
    license = "Apache-2.0"
    topics = ("http-client", "protobuf", "rpc")
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    options = {"server": [True, False], "tools": [True, False]}
    default_options = {"server": False, "tools": False}

    def export_sources(self):
        root = os.path.join(self.recipe_folder, os.pardir, os.pardir)
        copy(self, "*", src=root, dst=self.export_sources_folder, excludes=("build/*", ".git/*"))

    def validate(self):
        if self.settings.os != "Linux" or self.settings.arch in ("x86", "armv7", "armv7hf"):
            raise ConanInvalidConfiguration("hcyclient needs a 64-bit Linux")
        # The sources are compiled as C++20, whatever compiler.cppstd says; configuring stops if the
        # compiler is too old.

    def layout(self):
        cmake_layout(self)

    def requirements(self):
        # None of their headers is in the library's own.
        self.requires("boost/[>=1.74 <2]")
        self.requires("libcurl/[>=7.88 <9]")
        self.requires("protobuf/[>=3.21 <7]")
        # The programs are compiled with these headers, and no package that uses this one sees them. Conan
        # wants every requirement that is visible to be named in package_info().
        if self.options.server:
            self.requires("eigen/[>=3.4 <6]", visible=False)
            self.requires("openssl/[>=3 <4]")
        if self.options.tools:
            self.requires("tomlplusplus/[>=3 <4]", visible=False)
        if self.options.server or self.options.tools:
            self.requires("cli11/[>=2.1 <3]", visible=False)
            self.requires("nlohmann_json/[>=3.11 <4]", visible=False)

    def build_requirements(self):
        self.tool_requires("cmake/[>=3.25]")
        self.tool_requires("protobuf/<host_version>")

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["HCY_BUILD_SERVER"] = bool(self.options.server)
        toolchain.cache_variables["HCY_BUILD_TOOLS"] = bool(self.options.tools)
        toolchain.cache_variables["HCY_BUILD_TESTS"] = False
        # A static Protocol Buffers ends up inside the library, a shared one beside it.
        protobuf = self.dependencies["protobuf"]
        toolchain.cache_variables["HCY_STATIC_PROTOBUF"] = not protobuf.options.get_safe("shared")
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()
        copy(self, "LICENSE", src=self.source_folder,
             dst=os.path.join(self.package_folder, "licenses"))
        # CMakeDeps and PkgConfigDeps write these for the program that uses the package.
        rmdir(self, os.path.join(self.package_folder, "lib", "cmake"))
        rmdir(self, os.path.join(self.package_folder, "lib", "pkgconfig"))
        rmdir(self, os.path.join(self.package_folder, "share"))

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "hcyclient")
        self.cpp_info.components["hcyclient"].libs = ["hcyclient"]
        self.cpp_info.components["hcyclient"].requires = [
            "boost::headers", "libcurl::libcurl", "protobuf::libprotobuf"]
        self.cpp_info.components["hcyclient"].set_property(
            "cmake_target_name", "hcyclient::hcyclient")
        self.cpp_info.components["cpp"].requires = ["hcyclient"]
        self.cpp_info.components["cpp"].set_property("cmake_target_name", "hcyclient::cpp")
        if self.options.server:
            self.cpp_info.components["server"].libs = ["hcyclient-server"]
            self.cpp_info.components["server"].requires = ["cpp", "openssl::openssl"]
            self.cpp_info.components["server"].set_property(
                "cmake_target_name", "hcyclient::server")
