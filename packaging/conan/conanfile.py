import re
from pathlib import Path

from conan import ConanFile
from conan.errors import ConanInvalidConfiguration
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeDeps, CMakeToolchain, cmake_layout
from conan.tools.files import copy, load, rmdir

required_conan_version = ">=2.0"


class ScrivelXmlGenConan(ConanFile):
    name = "scrivelxmlgen"
    description = "XML generators for a logger of CADI calls"
    license = "Apache-2.0"
    topics = ("xml", "logging", "debugging", "simulation")
    package_type = "library"

    settings = "os", "arch", "compiler", "build_type"
    options = {"shared": [True, False], "layer": [True, False]}
    default_options = {"shared": False, "layer": True}

    def _sources(self):
        return Path(self.recipe_folder).parent.parent

    def set_version(self):
        lists = load(self, self._sources() / "CMakeLists.txt")
        self.version = re.search(r"VERSION (\d+\.\d+\.\d+)", lists).group(1)

    def export_sources(self):
        for pattern in ("CMakeLists.txt", "LICENSE", "cmake/*", "src/*", "layer/*"):
            copy(self, pattern, src=self._sources(), dst=self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 17)
        if self.settings.os != "Linux":
            raise ConanInvalidConfiguration("The log file's stream is written for Linux")

    def layout(self):
        cmake_layout(self)

    def generate(self):
        CMakeDeps(self).generate()
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["SCRIVEL_BUILD_LAYER"] = bool(self.options.layer)
        toolchain.cache_variables["SCRIVEL_BUILD_TESTS"] = False
        toolchain.cache_variables["SCRIVEL_BUILD_EXAMPLES"] = False
        toolchain.cache_variables["SCRIVEL_BUILD_TOOL"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        copy(self, "LICENSE", src=self.source_folder, dst=Path(self.package_folder) / "licenses")
        CMake(self).install()
        # Conan writes the files by which consumers find the package.
        rmdir(self, Path(self.package_folder) / "lib" / "cmake")
        rmdir(self, Path(self.package_folder) / "lib" / "pkgconfig")

    def package_info(self):
        self.cpp_info.set_property("cmake_file_name", "ScrivelXmlGen")

        generators = self.cpp_info.components["generators"]
        generators.set_property("cmake_target_name", "ScrivelXmlGen::ScrivelXmlGen")
        generators.set_property("pkg_config_name", "ScrivelXmlGen")
        generators.libs = ["ScrivelXmlGen"]
        generators.includedirs = ["include/ScrivelXmlGen"]
        generators.system_libs = ["pthread"]

        if self.options.layer:
            layer = self.cpp_info.components["layer"]
            layer.set_property("cmake_target_name", "ScrivelXmlGen::Layer")
            layer.set_property("pkg_config_name", "ScrivelXmlGenLayer")
            layer.libs = ["ScrivelXmlGenLayer"]
            layer.includedirs = ["include/ScrivelXmlGen"]
            layer.requires = ["generators"]
