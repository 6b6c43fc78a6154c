# mutants_test.bash SCRIPT: what scripts/mutants says of a small tree. A mutant that changes nothing must
# survive.

script=$1
work=$(mktemp -d)
left=/dev/shm/quask-test.${work##*/}
trap 'rm -rf "$work" "$left"' EXIT
export QUASK_MUTANTS_TREE=$work/tree
mkdir -p "$QUASK_MUTANTS_TREE/tests/mutants"
cd "$QUASK_MUTANTS_TREE" || exit 1

cat > CMakePresets.json << 'END'
{
  "version": 6,
  "configurePresets": [
    {"name": "release", "generator": "Ninja", "binaryDir": "${sourceDir}/build/release"}
  ]
}
END
cat > CMakeLists.txt << 'END'
cmake_minimum_required(VERSION 3.25)
project(small LANGUAGES CXX)
enable_testing()
add_executable(sum_test sum_test.cpp)
add_test(NAME sum.OfOneAndOneIsTwo COMMAND sum_test)
END
cat > sum.h << 'END'
int sum(int a, int b)
{
    int const result = a + b;
    return result;
}
END
cat > sum_test.cpp << END
#include "sum.h"

#include <fstream>

int main()
{
    std::ofstream("$left") << "a table";
    return sum(1, 1) == 2 ? 0 : 1;
}
END
cat > tests/mutants/first.list << 'END'
# Each kind of entry.

mutant wrong-operator
in sum.h
- a + b
+ a - b
fails ^sum[.]

mutant nothing-changed
in sum.h
- a + b
+ b + a
fails ^sum[.]OfOne

mutant two-lines
in sum.h
-     int const result = a + b;
-     return result;
+     return a + b + 1;
fails ^sum[.]OfTwo|^sum[.]OfOne
fails ^sum[.]
END
cat > tests/mutants/second.list << 'END'
mutant a-line-dropped
in sum.h
-     int const result = a + b;
fails ^sum[.]

mutant order-of-the-operands
in sum.h
- int a, int b
+ int b, int a
equivalent addition does not
equivalent tell them apart

mutant not-there
in sum.h
- a * b
+ a + b
fails ^sum[.]

mutant there-twice
in sum.h
- result
+ sum
fails ^sum[.]

mutant no-such-file
in difference.h
- a
+ b
fails ^sum[.]
END

failures=0
# expect STATUS TEXT NAME...: what the script says of the mutants of these names.
expect() {
    local status=$1 text=$2 actual ended
    shift 2
    actual=$("$script" "$@" 2>&1)
    ended=$?
    if [ "$actual" != "$text" ] || [ "$ended" -ne "$status" ]; then
        printf 'mutants %s ends with %d and says\n%s\n' "$*" "$ended" "$actual"
        ((++failures))
    fi
}

cp -r . "$work/before"
expect 1 'killed      wrong-operator
survived    nothing-changed
killed      two-lines
broken      a-line-dropped
equivalent  order-of-the-operands: addition does not tell them apart
gone        not-there
gone        there-twice
gone        no-such-file
2 killed, 1 survived, 1 equivalent, 3 gone, 1 broken: 8 in all'
expect 0 'killed      wrong-operator
1 killed, 0 survived, 0 equivalent, 0 gone, 0 broken: 1 in all' wrong-operator
expect 1 'survived    nothing-changed
0 killed, 1 survived, 0 equivalent, 0 gone, 0 broken: 1 in all' nothing-changed
expect 0 'killed      wrong-operator
equivalent  order-of-the-operands: addition does not tell them apart
1 killed, 0 survived, 1 equivalent, 0 gone, 0 broken: 2 in all' order-of-the-operands wrong-operator
expect 2 'no mutant of this name: unknown' unknown

# What the tests leave behind goes with them, where the system allows them a /dev/shm of their own.
if [ -e "$left" ] && unshare --mount mount -t tmpfs none /dev/shm 2> /dev/null; then
    echo 'a test has left something in /dev/shm'
    ((++failures))
fi

# Nothing has changed but what was built, and a change of the tree counts.
diff -r --exclude=build . "$work/before" || ((++failures))
sed -i 's/a + b/b + a/' sum.h
expect 1 'gone        wrong-operator
0 killed, 0 survived, 0 equivalent, 1 gone, 0 broken: 1 in all' wrong-operator
cp "$work/before/sum.h" .

rm tests/mutants/*
printf 'mutant no-such-test\nin sum.h\n- a + b\n+ a\nfails ^sum[.]OfTwo\n' > tests/mutants/third.list
expect 2 'no such test: ^sum[.]OfTwo'
sed -i 's/== 2/== 3/' sum_test.cpp
sed -i 's/OfTwo//' tests/mutants/third.list
"$script" > /dev/null 2>&1
[ $? -eq 2 ] || { echo 'a test that fails without any change kills'; ((++failures)); }
((failures == 0))
