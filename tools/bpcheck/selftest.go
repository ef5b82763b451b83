package main

import (
	"fmt"
	"path/filepath"
	"regexp"
	"strings"
)

// edit replaces one piece of text in one of the tree's files; one with no
// old text appends.
type edit struct {
	file, old, new string
}

// A fault planted into a copy of the tree; the check must then report a
// problem matching want.
type fault struct {
	name     string
	edits    []edit
	remove   string        // a file taken out of the tree
	products []productCase // instead of the usual products
	want     string
}

var faults = []fault{
	{name: "source dropped from Android.bp",
		edits: []edit{{"Android.bp", "\"core/ims_event.cpp\",\n", ""}},
		want:  `velard: CMake compiles core/ims_event.cpp, Android.bp does not`},
	{name: "source that CMake does not build",
		edits: []edit{{"Android.bp", "\"tools/imsctl.cpp\",\n", "\"tools/imsctl.cpp\",\n\"tools/velard-host.cpp\",\n"}},
		want:  `imsctl: Android.bp compiles tools/velard-host.cpp, CMake does not`},
	{name: "simulated stack source dropped",
		edits: []edit{{"stack/Android.bp", "\"sim/samples.cpp\",\n", ""}},
		want:  `libvelar: CMake compiles stack/sim/samples.cpp`},
	{name: "unknown property",
		edits: []edit{{"Android.bp", "name: \"velard\",\n", "name: \"velard\",\nno_such_property: true,\n"}},
		want:  `unrecognized property "no_such_property"`},
	{name: "unknown module type",
		edits: []edit{{"Android.bp", "cc_binary {\n    name: \"imsctl\"", "cc_binry {\n    name: \"imsctl\""}},
		want:  `unrecognized module type "cc_binry"`},
	{name: "undefined dependency",
		edits: []edit{{"Android.bp", "\"libutils\",\n", "\"libutils\",\n\"libnotthere\",\n"}},
		want:  `depends on undefined module "libnotthere"`},
	{name: "wrong proto type",
		edits: []edit{{"imsproto/Android.bp", "type: \"lite\"", "type: \"lyte\""}},
		want:  `unknown proto type "lyte"`},
	{name: "missing source file",
		remove: "core/ims_main.cpp",
		want:   `module source path "[^"]*core/ims_main.cpp" does not exist`},
	{name: "init service file missing",
		remove: "velard.rc",
		want:   `module source path "[^"]*velard.rc" does not exist`},
	{name: "provider's library missing",
		products: []productCase{{product{"provider's stack", false, false}, "prebuilt_libvelar"}},
		want:     `module source path "[^"]*stack/provider/arm64/libvelar.so" does not exist`},
	{name: "vendor library linked",
		edits: []edit{
			{"Android.bp", "\"libutils\",\n", "\"libutils\",\n\"libvendor_only\",\n"},
			{"Android.bp", "", "cc_library { name: \"libvendor_only\", vendor: true }\n"}},
		want: `dependency "libvendor_only" of "velard" missing variant`},
	{name: "daemon moved off system_ext to system",
		edits: []edit{{"Android.bp", "name: \"velard\",\n", "name: \"velard\",\nsystem_ext_specific: false,\n"}},
		want:  `velard: installed as \[[^]]*/system/bin/velard\], want /system_ext/bin/velard`},
	{name: "daemon moved off system_ext to vendor",
		edits: []edit{{"Android.bp", "name: \"velard\",\n", "name: \"velard\",\nsystem_ext_specific: false,\nvendor: true,\n"}},
		want:  `dependency "libvelar" of "velard" missing variant`},
}

// runSelfTest checks the unchanged tree against its own source lists, then
// plants each fault into a copy and expects the check to catch it.
func runSelfTest(tree map[string][]byte) int {
	baseline := map[string][]string{}
	for _, pr := range products {
		ctx, errs := load(tree, pr.product)
		if len(errs) > 0 {
			fmt.Printf("FAIL unchanged tree, %s: %v\n", pr.name, errs)
			return 1
		}
		for _, c := range counterparts {
			if c.simStack == pr.simStack {
				baseline[c.module] = compiledSources(ctx, c.module, c.variant)
			}
		}
	}
	if problems := check(tree, baseline, products); len(problems) > 0 {
		fmt.Printf("FAIL unchanged tree: %v\n", problems)
		return 1
	}
	fmt.Println("ok   unchanged tree")
	for _, c := range counterparts {
		fmt.Printf("       %s: %d sources\n", c.module, len(baseline[c.module]))
	}

	failed := 0
	for _, f := range faults {
		copy, err := plant(tree, f)
		if err != nil {
			fmt.Printf("FAIL %s: %v\n", f.name, err)
			failed++
			continue
		}
		prods := products
		if f.products != nil {
			prods = f.products
		}
		problems := check(copy, baseline, prods)
		want := regexp.MustCompile(f.want)
		caught := ""
		for _, p := range problems {
			if caught == "" && want.MatchString(p.Error()) {
				caught = strings.SplitN(p.Error(), "\n", 2)[0]
			}
		}
		if caught != "" {
			fmt.Printf("ok   %s\n       %s\n", f.name, caught)
		} else {
			fmt.Printf("FAIL %s: want a problem matching %q, got %v\n", f.name, f.want, problems)
			failed++
		}
	}
	if failed > 0 {
		return 1
	}
	return 0
}

func plant(tree map[string][]byte, f fault) (map[string][]byte, error) {
	copy := map[string][]byte{}
	for k, v := range tree {
		copy[k] = v
	}
	for _, e := range f.edits {
		path := filepath.Join(treeDir, e.file)
		text := string(copy[path])
		if e.old == "" {
			copy[path] = []byte(text + e.new)
			continue
		}
		// Indentation is bpfmt's; the edits name the text without it.
		old := regexp.MustCompile(`[ \t]*` + regexp.QuoteMeta(strings.TrimSuffix(e.old, "\n")) + `\n?`)
		if !old.MatchString(text) {
			return nil, fmt.Errorf("%s no longer contains %q: update the fault", e.file, e.old)
		}
		copy[path] = []byte(old.ReplaceAllLiteralString(text, e.new))
	}
	if f.remove != "" {
		path := filepath.Join(treeDir, f.remove)
		if _, ok := copy[path]; !ok {
			return nil, fmt.Errorf("%s is not in the tree: update the fault", f.remove)
		}
		delete(copy, path)
	}
	return copy, nil
}
