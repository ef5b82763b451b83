#!/usr/bin/env bash
# Builds velard's SELinux policy (sepolicy/) against the stand-in platform
# policy (platform/sepolicy/) and checks its contexts files, then plants a
# fault of every kind that the check is meant to catch into a copy and
# expects each to fail at its own stage.
#
#   sepolicy_test.sh SOURCE_DIR
set -uo pipefail
src=${1:?usage: sepolicy_test.sh SOURCE_DIR}
plat=$src/platform/sepolicy
work=$(mktemp -d /tmp/velard-sepolicy.XXXXXX)
trap 'rm -rf "$work"' EXIT

for tool in m4 checkpolicy secilc setfiles; do
  command -v "$tool" >/dev/null || { echo "missing $tool (bash scripts/setup.sh installs it)"; exit 1; }
done

# Types named by a contexts file: the third field of its context.
context_types() { awk '!/^[[:space:]]*(#|$)/ { split($2, c, ":"); print c[3] }' "$1" | sort -u; }

# m4 over the platform's definitions and macros, then the given .te files,
# then the platform's roles, users and initial contexts: one policy.conf.
conf() {
  local out=$1; shift
  m4 -s "$plat/security_classes" "$plat/initial_sids" "$plat/access_vectors" "$plat/mls" \
     "$plat/te_macros" "$plat/attributes" "$plat/platform.te" "$@" \
     "$plat/roles_users" "$plat/initial_sid_contexts" > "$out"
}

# check POLICY_DIR OUT_DIR: prints "<stage>: <why>" and fails at the first
# stage that does not pass.
check() {
  local pol=$1 out=$2
  mkdir -p "$out"
  local te=("$pol"/*.te)
  conf "$out/policy.conf" "${te[@]}" 2> "$out/log" || { echo "m4: $(cat "$out/log")"; return 1; }
  # The platform's compiler: syntax, undefined types, classes, permissions
  # and macros (an unknown macro stays as text and is a syntax error), and
  # every neverallow rule.
  checkpolicy -M -o "$out/policy.bin" "$out/policy.conf" > "$out/log" 2>&1 ||
    { echo "checkpolicy: $(grep -v '^checkpolicy:  loading\|^checkpolicy:  policy' "$out/log" | head -5)"; return 1; }
  # The form in which a device combines its policies: CIL, compiled by secilc.
  { checkpolicy -M -C -o "$out/policy.cil" "$out/policy.conf" &&
    secilc -M true -o "$out/secilc.bin" -f /dev/null "$out/policy.cil"; } > "$out/log" 2>&1 ||
    { echo "secilc: $(head -5 "$out/log")"; return 1; }
  # Every context must be valid in the compiled policy (user, role, type, level).
  setfiles -c "$out/policy.bin" "$pol/file_contexts" > "$out/log" 2>&1 ||
    { echo "file_contexts: $(head -5 "$out/log")"; return 1; }
  # property_contexts has the form "name context [exact|prefix] [type]";
  # its first two fields are a valid file_contexts line.
  awk '!/^[[:space:]]*(#|$)/ { print $1, $2 }' "$pol/property_contexts" > "$out/property.fc"
  setfiles -c "$out/policy.bin" "$out/property.fc" > "$out/log" 2>&1 ||
    { echo "property_contexts: $(head -5 "$out/log")"; return 1; }
  # A valid context can still name the wrong kind of type (a domain for a
  # file): a file's type must be a file or device type, a property's a
  # property type of the system side, as this is system policy. Stated as
  # neverallow rules over generated allow rules.
  {
    echo "type contexts_check;"
    echo "neverallow contexts_check ~{ file_type dev_type }:file relabelto;"
    echo "neverallow contexts_check ~system_property_type:property_service set;"
    context_types "$pol/file_contexts" | sed 's/.*/allow contexts_check &:file relabelto;/'
    context_types "$pol/property_contexts" | sed 's/.*/allow contexts_check &:property_service set;/'
  } > "$out/contexts_check.te"
  conf "$out/check.conf" "${te[@]}" "$out/contexts_check.te" &&
    checkpolicy -M -o "$out/check.bin" "$out/check.conf" > "$out/log" 2>&1 ||
    { echo "context types: $(grep -i 'neverallow\|violated\|allow contexts_check' "$out/log" | head -3)"; return 1; }
  return 0
}

status=0
if ! why=$(check "$src/sepolicy" "$work/real"); then
  echo "sepolicy/ does not build: $why"
  status=1
else
  echo "sepolicy/ builds and its contexts are valid"
fi

# Planted faults: name | stage that must catch it | what its message must
# name | file | sed script (an "a" command appends a line).
faults=(
  "misspelt type|checkpolicy|unknown type velard_uid_porp|velard.te|s/get_prop(velard, velard_uid_prop)/get_prop(velard, velard_uid_porp)/"
  "undefined permission|checkpolicy|sys_admn is not defined|velard.te|0,/ sys_admin }/s// sys_admn }/"
  "unknown macro|checkpolicy|set_property|radio.te|s/set_prop(/set_property(/"
  "another domain connects to the socket|checkpolicy|violated by allow untrusted_app velard:unix_stream_socket|radio.te|\$a unix_socket_connect(untrusted_app, velard, velard)"
  "a capability beyond the start-up's|checkpolicy|violated by allow velard velard:capability { setgid }|velard.te|0,/setuid net_admin/s//setuid setgid net_admin/"
  "setpcap|checkpolicy|violated by allow velard velard:capability { setpcap }|velard.te|\$a allow velard self:capability setpcap;"
  "another domain sets the property|checkpolicy|violated by allow shell velard_uid_prop:property_service|radio.te|\$a set_prop(shell, velard_uid_prop)"
  "entered from another domain|checkpolicy|violated by allow shell velard:process { transition }|velard.te|\$a domain_auto_trans(shell, velard_exec, velard)"
  "velard outside the system domains|checkpolicy|violated by allow radio velard:unix_stream_socket { connectto }|velard.te|s/type velard, domain, coredomain;/type velard, domain;/"
  "the vendor binder device|checkpolicy|violated by allow velard vndbinder_device:chr_file { open }|velard.te|\$a vndbinder_use(velard)"
  "executable labelled as a vendor file|checkpolicy|violated by allow velard velard_exec:file { entrypoint }|velard.te|s/exec_type, system_file_type,/exec_type, vendor_file_type,/"
  "a vendor domain reads the property|checkpolicy|violated by allow vendor_init velard_uid_prop:file|property.te|\$a get_prop(vendor_init, velard_uid_prop)"
  "undefined type in file_contexts|file_contexts|velard_sock:s0|file_contexts|s/velard_socket:s0/velard_sock:s0/"
  "unknown level in file_contexts|file_contexts|velard_exec:s7|file_contexts|s/velard_exec:s0/velard_exec:s7/"
  "undefined type in property_contexts|property_contexts|velard_uid:s0|property_contexts|s/velard_uid_prop:/velard_uid:/"
  "a file labelled with a domain|context types|contexts_check velard:file|file_contexts|s/velard_exec:s0/velard:s0/"
  "a property labelled with a file type|context types|contexts_check velard_socket:property_service|property_contexts|s/velard_uid_prop:/velard_socket:/"
  "a vendor property type|context types|contexts_check velard_uid_prop:property_service|property.te|s/system_internal_prop(velard_uid_prop)/type velard_uid_prop, property_type, vendor_property_type;/"
)
n=0
for f in "${faults[@]}"; do
  IFS='|' read -r name stage expect file script <<< "$f"
  copy=$work/fault$((++n))
  cp -r "$src/sepolicy" "$copy"
  sed -i "$script" "$copy/$file"
  if cmp -s "$src/sepolicy/$file" "$copy/$file"; then
    echo "planted fault '$name' changed nothing in $file"; status=1; continue
  fi
  if why=$(check "$copy" "$copy.out"); then
    echo "planted fault '$name' was not caught"; status=1
  elif [[ $why != "$stage:"* || $why != *"$expect"* ]]; then
    echo "planted fault '$name' not caught as expected ($stage, naming '$expect'): $why"; status=1
  else
    echo "planted fault '$name' caught: ${why//$'\n'/ }"
  fi
done
exit $status
