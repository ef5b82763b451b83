// bpcheck loads the tree's Android.bp files into the platform build system's
// own module definitions (its Go sources, as Debian packages them) and runs
// its test harness over them: parsing, the mutators, dependency resolution
// and the generation of build actions. It fails on what a platform build
// would reject before compiling anything: an unknown module type or property,
// a wrong value (a proto type, a soong_config variable), a dependency on a
// module that does not exist or may not be linked from the system_ext
// partition (a vendor library), and a source, include directory or prebuilt that is not in the tree. It
// also compares the sources that the platform build compiles into velard, the
// simulated stack and imsctl with the list that CMake writes for the same
// three, and checks where velard and imsctl are installed.
//
// The packaged build system is a snapshot from late 2020. What this does not
// cover:
//   - properties, module types and checks added since (a newer tree may
//     reject what passes here, or accept what fails);
//   - the platform modules themselves: liblog, libcutils, libutils, libbinder
//     and both protobuf runtimes are the stand-ins below, so their exported
//     headers and their symbols are only as right as those stand-ins;
//   - compiling and linking: no toolchain runs, so the code's warnings under
//     the device's compiler, missing symbols and the provider's library's ABI
//     are seen only by a device build;
//   - the product: PRODUCT_PACKAGES, installation into an image, Make's
//     checks, init and SELinux.
//
// Usage:
//
//	bpcheck -tree DIR -sources FILE   check the tree against CMake's list
//	bpcheck -tree DIR -self-test      plant faults in a copy; each must fail
package main

import (
	"bufio"
	"flag"
	"fmt"
	"io/ioutil"
	"os"
	"path/filepath"
	"reflect"
	"sort"
	"strings"
	"unsafe"

	"github.com/google/blueprint"
	"github.com/google/blueprint/proptools"

	"android/soong/android"
	"android/soong/cc"
	_ "android/soong/genrule" // registers genrule globally
)

// Where the tree sits in the simulated platform tree.
const treeDir = "vendor/example/velard"

// Stand-ins for the platform modules that the tree uses: system libraries,
// which a system_ext module links as any system module does. The harness
// brings libc, libc++, libprotobuf-cpp-lite and the toolchain.
var standInLibs = []string{"liblog", "libbinder", "libcutils", "libutils", "libprotobuf-cpp-full"}

func standIns() string {
	bp := ""
	for _, name := range standInLibs {
		bp += fmt.Sprintf("cc_library { name: %q }\n", name)
	}
	return bp
}

// The module types that the tree may use beyond those of the cc harness.
var extraModuleTypes = []string{
	"genrule",
	"soong_config_module_type",
	"soong_config_bool_variable",
	"soong_config_string_variable",
}

// Variants of the first device architecture in the system images (system
// and system_ext share them).
const (
	binaryVariant = "android_arm64_armv8-a"
	sharedVariant = binaryVariant + "_shared"
)

// product is what a product decides for the tree.
type product struct {
	name         string
	simStack     bool // SOONG_CONFIG_velard_sim_stack := true
	providerFile bool // the provider's library is in the tree
}

// A product that must build, with the library that velard links then.
type productCase struct {
	product
	libvelar string // the module velard takes libvelar from
}

var products = []productCase{
	{product{"provider's stack", false, true}, "prebuilt_libvelar"},
	{product{"simulated stack", true, false}, "libvelar"},
}

// Files that the harness's own module definitions name.
var harnessFiles = []string{
	"libc.map.txt",
	"libdl.map.txt",
	"libm.map.txt",
	"prebuilts/ndk/current/sources/cxx-stl/llvm-libc++/libs/.keep",
}

const providerLib = "stack/provider/arm64/libvelar.so"

// loadTree reads the tree into the harness's file system under treeDir.
// Only Android.bp files are read; for the rest, existence is what counts.
func loadTree(root string) (map[string][]byte, error) {
	fs := map[string][]byte{}
	err := filepath.Walk(root, func(path string, info os.FileInfo, err error) error {
		if err != nil {
			return err
		}
		rel, _ := filepath.Rel(root, path)
		if info.IsDir() {
			// Build trees and version control are no part of the module.
			if rel != "." && (strings.HasPrefix(info.Name(), ".") || strings.HasPrefix(rel, "build")) {
				return filepath.SkipDir
			}
			return nil
		}
		var data []byte
		if info.Name() == "Android.bp" {
			if data, err = ioutil.ReadFile(path); err != nil {
				return err
			}
		}
		fs[filepath.Join(treeDir, rel)] = data
		return nil
	})
	return fs, err
}

// requireExistingPaths makes a missing source an error, as in a real build:
// the harness's configuration lets tests name files that do not exist and
// offers no way to turn that off.
func requireExistingPaths(config android.Config) {
	c := reflect.ValueOf(config).Field(0).Elem()
	f := c.FieldByName("testAllowNonExistentPaths")
	reflect.NewAt(f.Type(), unsafe.Pointer(f.UnsafeAddr())).Elem().SetBool(false)
}

// load runs the platform build's analysis over the tree for one product.
func load(tree map[string][]byte, p product) (*android.TestContext, []error) {
	fs := map[string][]byte{}
	var bpFiles []string
	for path, data := range tree {
		fs[path] = data
		if filepath.Base(path) == "Android.bp" {
			bpFiles = append(bpFiles, path)
		}
	}
	sort.Strings(bpFiles)
	for _, path := range harnessFiles {
		fs[path] = nil
	}
	if p.providerFile {
		fs[filepath.Join(treeDir, providerLib)] = nil
	}

	bp := cc.GatherRequiredDepsForTest(android.Android) + standIns()

	buildDir, err := ioutil.TempDir("", "bpcheck")
	if err != nil {
		return nil, []error{err}
	}
	defer os.RemoveAll(buildDir)
	config := android.TestArchConfig(buildDir, nil, bp, fs)
	// A device that keeps system and vendor apart: vendor modules are built
	// only for the vendor image, so a system_ext module cannot link one.
	config.TestProductVariables.DeviceVndkVersion = proptools.StringPtr("current")
	config.TestProductVariables.Platform_vndk_version = proptools.StringPtr("VER")
	if p.simStack {
		config.TestProductVariables.VendorVars = map[string]map[string]string{
			"velard": {"sim_stack": "true"},
		}
	}
	requireExistingPaths(config)

	ctx := cc.CreateTestContext()
	factories := android.ModuleTypeFactories()
	for _, t := range extraModuleTypes {
		ctx.RegisterModuleType(t, factories[t])
	}
	ctx.Register(config)
	if _, errs := ctx.ParseFileList(".", append([]string{"Android.bp"}, bpFiles...)); len(errs) > 0 {
		return nil, errs
	}
	if _, errs := ctx.PrepareBuildActions(config); len(errs) > 0 {
		return nil, errs
	}
	return ctx, nil
}

// sourceExts are the files that the two builds compile or generate code from.
var sourceExts = map[string]bool{".c": true, ".cc": true, ".cpp": true, ".proto": true}

type buildParamser interface {
	BuildParamsForTests() []android.BuildParams
}

// compiledSources lists the tree's sources read by the build actions of a
// module and of the libraries of the tree that it links statically or
// generates from (shared libraries are modules of their own).
func compiledSources(ctx *android.TestContext, name, variant string) []string {
	top := ctx.ModuleForTests(name, variant).Module()
	modules := []blueprint.Module{top}
	ctx.VisitDepsDepthFirst(top, func(dep blueprint.Module) {
		if !strings.HasPrefix(ctx.ModuleDir(dep)+"/", treeDir+"/") {
			return
		}
		if m, ok := dep.(*cc.Module); ok && m.Shared() {
			return
		}
		modules = append(modules, dep)
	})
	seen := map[string]bool{}
	for _, m := range modules {
		bm, ok := m.(buildParamser)
		if !ok {
			continue
		}
		for _, p := range bm.BuildParamsForTests() {
			// The protoc rule names its schema among the implicit inputs.
			ins := append(append(android.Paths{p.Input}, p.Inputs...), p.Implicits...)
			for _, in := range ins {
				if in == nil || !sourceExts[filepath.Ext(in.String())] {
					continue
				}
				if rel := strings.TrimPrefix(in.String(), treeDir+"/"); rel != in.String() {
					seen[rel] = true
				}
			}
		}
	}
	return sortedKeys(seen)
}

func sortedKeys(set map[string]bool) []string {
	var keys []string
	for k := range set {
		keys = append(keys, k)
	}
	sort.Strings(keys)
	return keys
}

// readCMakeSources reads lines "<module> <path relative to the tree>".
func readCMakeSources(path string) (map[string][]string, error) {
	f, err := os.Open(path)
	if err != nil {
		return nil, err
	}
	defer f.Close()
	lists := map[string][]string{}
	scanner := bufio.NewScanner(f)
	for scanner.Scan() {
		fields := strings.Fields(scanner.Text())
		if len(fields) != 2 {
			return nil, fmt.Errorf("%s: bad line %q", path, scanner.Text())
		}
		lists[fields[0]] = append(lists[fields[0]], fields[1])
	}
	for _, l := range lists {
		sort.Strings(l)
	}
	return lists, scanner.Err()
}

// diff returns what is in one sorted list and not in the other.
func diff(a, b []string) (onlyA, onlyB []string) {
	in := func(s []string, x string) bool {
		i := sort.SearchStrings(s, x)
		return i < len(s) && s[i] == x
	}
	for _, x := range a {
		if !in(b, x) {
			onlyA = append(onlyA, x)
		}
	}
	for _, x := range b {
		if !in(a, x) {
			onlyB = append(onlyB, x)
		}
	}
	return
}

// The module variant of each CMake target's counterpart, and the product in
// which it is built.
var counterparts = []struct {
	module, variant string
	simStack        bool
}{
	{"velard", binaryVariant, false},
	{"imsctl", binaryVariant, false},
	{"libvelar", sharedVariant, true},
}

// Where a platform build installs the binaries: the system_ext partition.
var installs = map[string]string{
	"velard": "/system_ext/bin/velard",
	"imsctl": "/system_ext/bin/imsctl",
}

// check runs every product and every comparison; it returns the problems.
func check(tree map[string][]byte, cmake map[string][]string, products []productCase) []error {
	var problems []error
	for _, pr := range products {
		ctx, errs := load(tree, pr.product)
		for _, err := range errs {
			problems = append(problems, fmt.Errorf("%s: %v", pr.name, err))
		}
		if ctx == nil {
			continue
		}
		if got := linkedLibvelar(ctx); got != pr.libvelar {
			problems = append(problems, fmt.Errorf("%s: velard links %q, want %q", pr.name, got, pr.libvelar))
		}
		for _, c := range counterparts {
			if c.simStack != pr.simStack {
				continue
			}
			bp := compiledSources(ctx, c.module, c.variant)
			missing, extra := diff(cmake[c.module], bp)
			for _, s := range missing {
				problems = append(problems, fmt.Errorf("%s: CMake compiles %s, Android.bp does not", c.module, s))
			}
			for _, s := range extra {
				problems = append(problems, fmt.Errorf("%s: Android.bp compiles %s, CMake does not", c.module, s))
			}
		}
		for name, want := range installs {
			m := ctx.ModuleForTests(name, binaryVariant).Module()
			var got []string
			for _, p := range m.FilesToInstall() {
				got = append(got, p.String())
			}
			if len(got) != 1 || !strings.HasSuffix(got[0], want) {
				problems = append(problems, fmt.Errorf("%s: installed as %v, want %s", name, got, want))
			}
		}
	}
	return problems
}

// linkedLibvelar names the module whose libvelar velard links.
func linkedLibvelar(ctx *android.TestContext) string {
	var name string
	ctx.VisitDirectDeps(ctx.ModuleForTests("velard", binaryVariant).Module(), func(dep blueprint.Module) {
		if n := ctx.ModuleName(dep); strings.HasSuffix(n, "libvelar") {
			name = n
		}
	})
	return name
}

func main() {
	root := flag.String("tree", "", "the repository's root")
	sources := flag.String("sources", "", "CMake's source list")
	selfTest := flag.Bool("self-test", false, "plant faults into a copy of the tree and expect each to fail")
	flag.Parse()
	if *root == "" || (*sources == "") == !*selfTest {
		fmt.Fprintln(os.Stderr, "usage: bpcheck -tree DIR (-sources FILE | -self-test)")
		os.Exit(2)
	}
	tree, err := loadTree(*root)
	if err != nil {
		fmt.Fprintln(os.Stderr, "bpcheck:", err)
		os.Exit(2)
	}
	if *selfTest {
		os.Exit(runSelfTest(tree))
	}
	cmake, err := readCMakeSources(*sources)
	if err != nil {
		fmt.Fprintln(os.Stderr, "bpcheck:", err)
		os.Exit(2)
	}
	problems := check(tree, cmake, products)
	for _, p := range problems {
		fmt.Println("bpcheck:", p)
	}
	if len(problems) > 0 {
		os.Exit(1)
	}
	fmt.Printf("bpcheck: %d Android.bp files pass for %d products\n", countBp(tree), len(products))
}

func countBp(tree map[string][]byte) int {
	n := 0
	for path := range tree {
		if filepath.Base(path) == "Android.bp" {
			n++
		}
	}
	return n
}
