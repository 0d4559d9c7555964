# bash completion of kestrelctl. The candidates come from the program itself, made of the document of the API.

_kestrelctl() {
  # bash splits words at "=" and ":"; put those of one word together again, up to the cursor.
  local line=${COMP_LINE:0:COMP_POINT} words=() i
  local joined='' rest=$line
  for ((i = 0; i <= COMP_CWORD; i++)); do
    local word=${COMP_WORDS[i]}
    local before=${rest%%[![:blank:]]*}
    rest=${rest#"$before"}
    rest=${rest#"$word"}
    if [[ -n $before || $i -eq 0 ]]; then
      [[ $i -eq 0 ]] || words+=("$joined")
      joined=$word
    else
      joined+=$word
    fi
  done
  words+=("$joined")

  local candidate prefix=''
  [[ $joined != *[=:]* ]] || prefix=${joined%"${joined##*[=:]}"}
  COMPREPLY=()
  while IFS= read -r candidate; do
    [[ -z $candidate ]] || COMPREPLY+=("${candidate#"$prefix"}")
  done < <("${words[0]}" __complete "${words[@]:1}" 2>/dev/null)
  [[ ${#COMPREPLY[@]} -ne 1 || ${COMPREPLY[0]} != *= ]] || compopt -o nospace 2>/dev/null
}

complete -F _kestrelctl kestrelctl
