// Takes this folder's place until its first file.
