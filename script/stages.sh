# SPDX-FileCopyrightText: The libox authors
# SPDX-License-Identifier: Apache-2.0

# For scripts to source: `stage NAME` begins a stage, `end_stage` ends it, and so does the next. When
# the outermost script ends or fails, it prints what each took, those of scripts that it called too.
stage_name=

stage() {
    end_stage
    stage_name=$1
    stage_start=$SECONDS
    echo "== $1"
}

end_stage() {
    if [ -n "$stage_name" ]; then
        printf '%7d  %s\n' $((SECONDS - stage_start)) "$stage_name" >>"$OX_STAGES"
    fi
    stage_name=
}

print_stages() {
    end_stage
    if [ -s "$OX_STAGES" ]; then
        echo "seconds  stage"
        cat "$OX_STAGES"
    fi
    rm -f "$OX_STAGES"
}

if [ -n "${OX_STAGES:-}" ]; then
    trap end_stage EXIT
else
    OX_STAGES=$(mktemp)
    export OX_STAGES
    trap print_stages EXIT
fi
